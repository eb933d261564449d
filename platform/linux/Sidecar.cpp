#include "platform/linux/Sidecar.h"

#include "foundation/AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quilo::sidecar {
namespace {

ForkFailure failure(OSErr error, int systemError = 0) { return {error, systemError, {}}; }

struct Descriptor {
    int fd;
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

ForkFailure readAll(int fd, std::size_t size, std::vector<std::uint8_t>& bytes)
{
    bytes.resize(size);
    std::size_t got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, bytes.data() + got, size - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return failure(ioErr, errno);
        if (n == 0)
            break; // shrunk under us: what is there is parsed as it is
        got += std::size_t(n);
    }
    bytes.resize(got);
    return {};
}

} // namespace

ForkFailure load(const std::filesystem::path& path, std::optional<AppleDouble>& sidecar)
{
    sidecar.reset();
    // Non-blocking, so a FIFO or a device under the name cannot stall the
    // open; anything but a regular file is then refused at once.
    const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (file.fd < 0) {
        if (errno == ENOENT || errno == ENAMETOOLONG)
            return {};
        return failure(errno == EACCES ? permErr : ioErr, errno);
    }
    struct stat status {};
    if (::fstat(file.fd, &status) != 0)
        return failure(ioErr, errno);
    if (!S_ISREG(status.st_mode) || std::uintmax_t(status.st_size) > kMaxSidecarSize)
        return failure(mapReadErr);
    std::vector<std::uint8_t> bytes;
    if (const ForkFailure error = readAll(file.fd, std::size_t(status.st_size), bytes); error.error)
        return error;
    sidecar = AppleDouble::parse(bytes);
    return sidecar ? ForkFailure{} : failure(mapReadErr);
}

ForkFailure store(const std::filesystem::path& path, const AppleDouble& sidecar)
{
    if (sidecar.holdsNothing())
        return ::unlink(path.c_str()) == 0 || errno == ENOENT ? ForkFailure{} : failure(writErr, errno);
    const auto bytes = sidecar.serialise();
    if (!bytes || bytes->size() > kMaxSidecarSize)
        return failure(fsDataTooBigErr);
    if (!writeFileAtomically(path, *bytes, false, 0644))
        return failure(writErr, errno);
    return {};
}

} // namespace quilo::sidecar
