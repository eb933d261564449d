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

// A replaced file keeps its mode; a new one has the umask's, set at creation.
bool setMode(int fd, const std::filesystem::path& path, bool executable)
{
    struct stat status {};
    const bool replacing = ::stat(path.c_str(), &status) == 0;
    if (!replacing && !executable)
        return true;
    if (!replacing && ::fstat(fd, &status) != 0)
        return false;
    mode_t mode = status.st_mode & 07777;
    if (executable)
        mode |= (mode & 0444) >> 2;
    return ::fchmod(fd, mode) == 0;
}

} // namespace

bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes, bool executable)
{
    static std::atomic<unsigned> counter{0};
    const std::string temporary = (path.parent_path() / ("." + path.filename().string() + ".quilo-"
                                                          + std::to_string(::getpid()) + "-"
                                                          + std::to_string(counter++)))
                                      .string();
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    const bool ok = setMode(fd, path, executable) && writeAll(fd, bytes) && ::fsync(fd) == 0;
    if (::close(fd) != 0 || !ok || ::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno; // the cause, not the clean-up's
        ::unlink(temporary.c_str());
        errno = error;
        return false;
    }
    return true;
}

} // namespace quilo
