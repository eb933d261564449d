#include "foundation/FourCharCode.h"

#include <cstdio>

namespace quilo {

std::string fourCharCodeString(OSType code)
{
    std::string text(4, ' ');
    for (int i = 0; i < 4; ++i) {
        const char c = char((code >> (24 - 8 * i)) & 0xFF);
        if (c < 0x20 || c > 0x7E) {
            char hex[11];
            std::snprintf(hex, sizeof hex, "0x%08X", unsigned(code));
            return hex;
        }
        text[std::size_t(i)] = c;
    }
    return text;
}

} // namespace quilo
