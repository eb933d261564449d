#include "foundation/PathNames.h"

namespace quilo {
namespace {

constexpr char16_t kEscapeBase = 0xDC00;

// The code point of the UTF-8 sequence at `at`, and its length; length 0
// when the bytes there are no valid sequence (overlong, a surrogate, past
// U+10FFFF, cut short).
std::pair<char32_t, std::size_t> decodeAt(std::string_view bytes, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return std::uint8_t(bytes[at + i]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xC2 && lead < 0xE0 ? 2 : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5                ? 4
                                                                             : 0;
    if (length == 0 || at + length > bytes.size())
        return {0, 0};
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return {0, 0};
        code = code << 6 | (byte(i) & 0x3F);
    }
    const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF)
        return {0, 0};
    return {code, length};
}

void appendUtf8(std::string& out, char32_t code)
{
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | code >> 6);
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | code >> 12);
        out += char(0x80 | (code >> 6 & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | code >> 18);
        out += char(0x80 | (code >> 12 & 0x3F));
        out += char(0x80 | (code >> 6 & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

} // namespace

QString qStringFromPath(std::string_view bytes)
{
    QString name;
    name.reserve(qsizetype(bytes.size()));
    for (std::size_t at = 0; at < bytes.size();) {
        const auto [code, length] = decodeAt(bytes, at);
        if (length == 0) {
            name += QChar(char16_t(kEscapeBase + std::uint8_t(bytes[at])));
            ++at;
            continue;
        }
        const char32_t units[] = {code};
        name += QString::fromUcs4(units, 1);
        at += length;
    }
    return name;
}

std::string pathFromQString(const QString& name)
{
    std::string bytes;
    bytes.reserve(std::size_t(name.size()));
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t unit = name[i].unicode();
        if (QChar::isHighSurrogate(unit) && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
            appendUtf8(bytes, QChar::surrogateToUcs4(unit, name[++i].unicode()));
        } else if (unit >= kEscapeBase + 0x80 && unit <= kEscapeBase + 0xFF) {
            bytes += char(unit - kEscapeBase);
        } else if (QChar::isSurrogate(unit)) {
            appendUtf8(bytes, 0xFFFD); // a lone surrogate no name gave us
        } else {
            appendUtf8(bytes, unit);
        }
    }
    return bytes;
}

} // namespace quilo
