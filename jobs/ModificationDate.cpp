#include "jobs/ModificationDate.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace quilo {

std::optional<timespec> modificationDate(const std::filesystem::path& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status.st_mtim;
}

bool setModificationDate(const std::filesystem::path& path, const timespec& date)
{
    const timespec times[2] = {{0, UTIME_OMIT}, date};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

} // namespace quilo
