#include "platform/linux/Sidecar.h"

#include "foundation/AtomicFile.h"
#include "iconfamily/ForkStore.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

namespace quilo::sidecar {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

OSErr readAll(std::FILE* file, std::vector<std::uint8_t>& bytes)
{
    std::uint8_t chunk[1 << 16];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, file)) {
        if (bytes.size() + got > kMaxSidecarSize)
            return mapReadErr;
        bytes.insert(bytes.end(), chunk, chunk + got);
    }
    return std::ferror(file) ? ioErr : noErr;
}

} // namespace

OSErr load(const std::filesystem::path& path, std::optional<AppleDouble>& sidecar)
{
    sidecar.reset();
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return errno == ENOENT ? noErr : (errno == EACCES ? permErr : ioErr);
    std::vector<std::uint8_t> bytes;
    if (const OSErr error = readAll(file.get(), bytes))
        return error;
    sidecar = AppleDouble::parse(bytes);
    return sidecar ? noErr : mapReadErr;
}

OSErr store(const std::filesystem::path& path, const AppleDouble& sidecar, WhenEmpty whenEmpty)
{
    if (whenEmpty == WhenEmpty::Delete && sidecar.holdsNothing())
        return ::unlink(path.c_str()) == 0 || errno == ENOENT ? noErr : ioErr;
    const auto bytes = sidecar.serialise();
    if (!bytes)
        return mapReadErr;
    return writeFileAtomically(path, *bytes) ? noErr : ioErr;
}

} // namespace quilo::sidecar
