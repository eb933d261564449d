// The string tables shipped with Quilo, and the lookup's fallbacks.
#include "foundation/LocalizedStrings.h"
#include "foundation/PropertyList.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

namespace quilo {
namespace {

// Each table is a property list of texts, none empty.
TEST(LocalizedStrings, EveryShippedTableIsReadable)
{
    const QStringList tables = QDir(":/strings").entryList();
    EXPECT_TRUE(tables.contains("Localizable.plist") && tables.contains("Actions.plist")) << tables.join(' ').toStdString();
    for (const QString& name : tables) {
        QFile file(":/strings/" + name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QString error;
        const auto table = propertyListFromXml(file.readAll(), &error);
        ASSERT_TRUE(table) << name.toStdString() << ": " << error.toStdString();
        for (const QVariant& text : table->toMap())
            EXPECT_FALSE(text.toString().isEmpty()) << name.toStdString();
    }
}

// A key without a text gives the value passed, or else the key.
TEST(LocalizedStrings, FallsBackToTheGivenValueThenTheKey)
{
    EXPECT_EQ(localizedString("No such key", "Given value"), "Given value");
    EXPECT_EQ(localizedString("No such key"), "No such key");
}

} // namespace
} // namespace quilo
