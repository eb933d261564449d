#include "foundation/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace quilo {
namespace {

bool writeAll(int fd, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes = bytes.subspan(std::size_t(written));
    }
    return true;
}

} // namespace

bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes)
{
    static std::atomic<unsigned> counter{0};
    const std::string temporary = (path.parent_path() / ("." + path.filename().string() + ".quilo-"
                                                          + std::to_string(::getpid()) + "-"
                                                          + std::to_string(counter++)))
                                      .string();
    // Created like any new file (the umask applies); a replaced file keeps its mode.
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    struct stat existing {};
    bool ok = ::stat(path.c_str(), &existing) != 0 || ::fchmod(fd, existing.st_mode & 07777) == 0;
    ok = ok && writeAll(fd, bytes) && ::fsync(fd) == 0;
    if (::close(fd) != 0 || !ok || ::rename(temporary.c_str(), path.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

} // namespace quilo
