// The string tables shipped with Quilo, and the lookup's fallbacks.
#include "foundation/LocalizedStrings.h"
#include "foundation/PropertyList.h"
#include "foundation/QuiloKeys.h"

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

TEST(LocalizedStrings, LooksUpByKeyWithFallbacks)
{
    for (const QString& action : {RTZHotKey_CreateThumbnails, RTZHotKey_RestoreThumbnails, RTZHotKey_SaveAsICNS})
        EXPECT_EQ(localizedString(action, "", "Actions"), action);
    EXPECT_EQ(localizedString("(None)"), "(None)");
    EXPECT_EQ(localizedString("No such key", "Given value"), "Given value");
    EXPECT_EQ(localizedString("No such key"), "No such key");
    EXPECT_EQ(localizedString("(None)", "", "NoSuchTable"), "(None)");
}

} // namespace
} // namespace quilo
