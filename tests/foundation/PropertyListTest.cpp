// Property lists as an update document or the key-name list brings them,
// and as an attacker might shape one.
#include "foundation/PropertyList.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QVariantList>
#include <QVariantMap>

namespace quilo {
namespace {

const QByteArray kHeader = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
)";

QByteArray plist(const QByteArray& body) { return kHeader + "<plist version=\"1.0\">" + body + "</plist>"; }

TEST(PropertyList, ReadsEveryType)
{
    const auto root = propertyListFromXml(plist(R"(<dict>
        <key>Quilo</key>
        <dict>
            <key>Current Version</key><string>1.2 &amp; more</string>
            <key>Download URL</key><string>https://example.com/quilo/</string>
        </dict>
        <key>numbers</key><array><integer>-42</integer><real>2.5</real><true/><false/></array>
        <key>when</key><date>2026-11-22T10:00:00Z</date>
        <key>bytes</key><data>
            AAEC
            /w==
        </data>
        <key>empty</key><dict/>
    </dict>)"));
    ASSERT_TRUE(root);
    const QVariantMap map = root->toMap();
    const QVariantMap quilo = map["Quilo"].toMap();
    EXPECT_EQ(quilo["Current Version"].toString(), "1.2 & more");
    EXPECT_EQ(quilo["Download URL"].toString(), "https://example.com/quilo/");
    EXPECT_EQ(map["numbers"].toList(), (QVariantList{qint64(-42), 2.5, true, false}));
    EXPECT_EQ(map["when"].toDateTime(), QDateTime(QDate(2026, 11, 22), QTime(10, 0), Qt::UTC));
    EXPECT_EQ(map["bytes"].toByteArray(), QByteArray::fromHex("000102ff"));
    EXPECT_TRUE(map["empty"].toMap().isEmpty());
    EXPECT_EQ(propertyListFromXml(plist("<string>alone</string>"))->toString(), "alone");
}

// Nothing a hostile document declares is ever expanded, and nothing outside
// the limits is read.
TEST(PropertyList, RefusesEntitiesAndExcess)
{
    const QByteArray laughs = R"(<?xml version="1.0"?>
<!DOCTYPE plist [<!ENTITY lol "lol"><!ENTITY lol2 "&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;">]>
<plist><string>&lol2;</string></plist>)";
    const QByteArray external = R"(<?xml version="1.0"?>
<!DOCTYPE plist [<!ENTITY secret SYSTEM "file:///etc/passwd">]>
<plist><string>&secret;</string></plist>)";
    const QByteArray undeclared = plist("<string>&nbsp;</string>");
    for (const QByteArray& hostile : {laughs, external, undeclared}) {
        QString error;
        EXPECT_FALSE(propertyListFromXml(hostile, &error)) << hostile.constData();
        EXPECT_FALSE(error.isEmpty());
    }

    QByteArray deep;
    for (int i = 0; i < 40; ++i)
        deep += "<array>";
    for (int i = 0; i < 40; ++i)
        deep += "</array>";
    QString error;
    EXPECT_FALSE(propertyListFromXml(plist(deep), &error));
    EXPECT_EQ(error, "the property list nests too deeply");
    EXPECT_TRUE(propertyListFromXml(plist(deep), nullptr, {1 << 20, 41}));

    const QByteArray big = plist("<string>" + QByteArray(2000, 'x') + "</string>");
    EXPECT_FALSE(propertyListFromXml(big, &error, {1000, 32}));
    EXPECT_TRUE(error.startsWith("the document is larger than"));
}

TEST(PropertyList, RefusesWhatIsNotAWholePropertyList)
{
    for (const QByteArray& bad : {
             QByteArray(""),
             QByteArray("<html><body/></html>"),
             plist("<dict><key>a</key></dict>"),
             plist("<dict><string>no key</string></dict>"),
             plist("<integer>12 monkeys</integer>"),
             plist("<date>yesterday</date>"),
             plist("<data>!!!</data>"),
             plist("<string>a</string><string>b</string>"),
             plist("<true>yes</true>"),
             plist("<font/>"),
             kHeader + "<plist><dict><key>cut</key><string>off",
         }) {
        QString error;
        EXPECT_FALSE(propertyListFromXml(bad, &error)) << bad.constData();
        EXPECT_FALSE(error.isEmpty()) << bad.constData();
    }
}

} // namespace
} // namespace quilo
