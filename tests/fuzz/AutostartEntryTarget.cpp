// Reads the input as an autostart entry, whoever wrote it, and writes back the
// login item it stands for; checks the desktop-entry escapes and Exec quoting
// on the input's text.
#include "tests/fuzz/FuzzTarget.h"

#include "platform/linux/DesktopEntryText.h"
#include "platform/linux/XdgAutostartEntry.h"
#include "tests/fuzz/FuzzCheck.h"

namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "autostart entry reader", promise);
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const QByteArray text(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    const AutostartEntry entry = autostartEntryFromDesktopFile(text);
    if (const auto written = desktopFileFromAutostartEntry(entry)) {
        const AutostartEntry reread = autostartEntryFromDesktopFile(*written);
        expect(desktopFileFromAutostartEntry(reread) == written, "an entry written back reads as itself");
    }

    const QString value = QString::fromUtf8(text);
    expect(unescapedDesktopValue(escapedDesktopValue(value)) == value, "an escaped value reads back unchanged");
    if (!value.isEmpty() && !value.contains(QChar(0)))
        expect(execProgram(unescapedDesktopValue(escapedDesktopValue(quotedExecArgument(value)))) == value,
               "a quoted program is the program of its Exec line");
}

} // namespace quilo::fuzz
