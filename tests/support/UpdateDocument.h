#pragma once

// Update documents as the maker's site publishes them.
#include <QByteArray>
#include <QString>

namespace quilo::test {

inline QByteArray propertyList(const QByteArray& root)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">"
        + root + "</plist>\n";
}

// A document with Quilo's entry and another application's beside it.
inline QByteArray updateDocument(const QString& version, const QString& download = "https://www.example.com/quilo/")
{
    QByteArray entry = "<key>Current Version</key><string>" + version.toHtmlEscaped().toUtf8() + "</string>";
    if (!download.isNull())
        entry += "<key>Download URL</key><string>" + download.toHtmlEscaped().toUtf8() + "</string>";
    return propertyList("<dict><key>Other</key><dict><key>Current Version</key><string>9.9</string></dict>"
                        "<key>Quilo</key><dict>"
        + entry + "</dict></dict>");
}

} // namespace quilo::test
