#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace quilo {

// File names are bytes; Qt's strings are Unicode. A name that is not UTF-8
// keeps each byte that cannot be read as one lone surrogate (U+DC80 plus the
// byte, as Python's file-system encoding does), so a path handed through
// Qt's strings comes back byte for byte and every file can be named.
QString qStringFromPath(std::string_view bytes);
std::string pathFromQString(const QString& name);

} // namespace quilo
