#include "iconfamily/ImageFileTypes.h"

#include <algorithm>
#include <cctype>

namespace quilo {
namespace {

std::vector<std::string> lowerAndUpper(std::initializer_list<const char*> extensions)
{
    std::vector<std::string> types;
    for (const char* extension : extensions) {
        std::string upper = extension;
        std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return char(std::toupper(c)); });
        types.emplace_back(extension);
        types.push_back(std::move(upper));
    }
    return types;
}

} // namespace

const std::vector<std::string>& imageFileTypes()
{
    static const std::vector<std::string> types = lowerAndUpper({
        "jpg", "jpeg", "jpe", "jfif", "png", "gif", "webp", "tif", "tiff", "heic", "heif", "avif",
        "svg", "svgz", "pdf", "jp2", "j2k", "jpf", "jpx", "jxl", "bmp", "icns",
    });
    return types;
}

bool isImageFileType(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind('.');
    const std::string_view extension = dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
    for (const std::string& type : imageFileTypes())
        if (extension == type)
            return true;
    return false;
}

} // namespace quilo
