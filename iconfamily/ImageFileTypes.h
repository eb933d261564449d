#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quilo {

// The file name extensions of the pictures Quilo reads, each in lower case
// and in capitals (cameras write IMG_0001.JPG). Mixed case is not listed.
const std::vector<std::string>& imageFileTypes();

// Whether the path's extension (after the last dot of its last component)
// equals an entry of the list exactly, case included. The file itself is not
// looked at, and a name without an extension is never an image.
bool isImageFileType(std::string_view path);

} // namespace quilo
