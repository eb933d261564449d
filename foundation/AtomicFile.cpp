#include "foundation/AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/random.h>
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

// A replaced regular file keeps its mode; anything else at the name (a link
// above all: its target's mode is not ours to copy) leaves the new file with
// the mode it was created with.
bool setMode(int fd, const std::filesystem::path& path, bool executable)
{
    struct stat status {};
    const bool replacing = ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    if (!replacing && !executable)
        return true;
    if (!replacing && ::fstat(fd, &status) != 0)
        return false;
    mode_t mode = status.st_mode & 07777;
    if (executable)
        mode |= (mode & 0444) >> 2;
    return ::fchmod(fd, mode) == 0;
}

// A short name of fixed length beside the target, so that any name the file
// system takes can be replaced: ".._q" and six random letters or digits.
std::string temporaryName()
{
    static constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    unsigned char random[6] = {};
    if (::getrandom(random, sizeof random, 0) != ssize_t(sizeof random))
        for (unsigned char& r : random)
            r = static_cast<unsigned char>(::rand());
    std::string name = ".._q";
    for (unsigned char r : random)
        name += kAlphabet[r % (sizeof kAlphabet - 1)];
    return name;
}

int createTemporary(const std::filesystem::path& folder, mode_t mode, std::string& temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = (folder / temporaryName()).string();
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

} // namespace

bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes, bool executable,
                         mode_t newFileMode)
{
    std::string temporary;
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    const int fd = createTemporary(folder, newFileMode, temporary);
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
