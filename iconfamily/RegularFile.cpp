#include "iconfamily/RegularFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quilo {

FileStream openRegularFile(const std::filesystem::path& path, std::string& error)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        error = std::string("cannot open the file (") + std::strerror(errno) + ")";
        return nullptr;
    }
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        error = "not a picture (not a regular file)";
        return nullptr;
    }
    // Reads of a regular file never block; blocking mode is restored for
    // the stdio layer's sake.
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    std::FILE* file = ::fdopen(fd, "rb");
    if (!file) {
        ::close(fd);
        error = "cannot open the file";
    }
    return FileStream(file);
}

} // namespace quilo
