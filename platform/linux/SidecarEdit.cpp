#include "platform/linux/SidecarEdit.h"

#include "platform/linux/Sidecar.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quilo {
namespace {

// The folder, open and locked; -1 with errno set when it cannot be opened.
int lockedFolder(const std::filesystem::path& folder)
{
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
    }
    return fd; // a file system without locks: edited unlocked, still atomically
}

} // namespace

SidecarEdit::SidecarEdit(const std::filesystem::path& item, const std::filesystem::path& sidecarPath)
    : item_(item)
    , sidecarPath_(sidecarPath)
{
    readFailure_ = read();
    readFailure_.item = item;
}

SidecarEdit::~SidecarEdit()
{
    if (folder_ >= 0)
        ::close(folder_); // releases the lock
}

ForkFailure SidecarEdit::read()
{
    if (sidecarPath_.empty())
        return {paramErr, 0, {}};
    folder_ = lockedFolder(item_.parent_path());
    if (folder_ < 0)
        return {errno == EACCES ? permErr : ioErr, errno, {}};
    struct stat status {};
    if (::stat(item_.c_str(), &status) != 0)
        return {fnfErr, errno, {}};
    if (ForkFailure failure = sidecar::load(sidecarPath_, sidecar_); failure.error)
        return failure;
    isNew_ = !sidecar_;
    if (!sidecar_)
        return {};
    finderInfo_ = sidecar_->finderInfo();
    const auto forkBytes = sidecar_->resourceFork();
    if (forkBytes && !forkBytes->empty()) {
        fork_ = parseResourceFork(*forkBytes);
        if (!fork_)
            return {mapReadErr, 0, {}};
    }
    return {};
}

ForkFailure SidecarEdit::commit()
{
    if (readFailure_.error)
        return readFailure_;
    AppleDouble changed = sidecar_.value_or(AppleDouble());
    if (finderInfo_ != changed.finderInfo())
        changed.setFinderInfo(finderInfo_);
    if (fork_) {
        auto bytes = serialiseResourceFork(*fork_);
        if (!bytes)
            return {fsDataTooBigErr, 0, item_};
        const auto before = changed.resourceFork();
        if (!before || !std::equal(before->begin(), before->end(), bytes->begin(), bytes->end()))
            changed.setResourceFork(std::move(*bytes));
    } else if (changed.resourceFork()) {
        changed.setResourceFork({});
    }
    // Left as it was, it is not written again (each write is a sync to disk).
    if (sidecar_ ? changed == *sidecar_ : changed.holdsNothing())
        return {};
    ForkFailure failure = sidecar::store(sidecarPath_, changed);
    failure.item = item_;
    if (!failure.error)
        sidecar_ = std::move(changed);
    return failure;
}

} // namespace quilo
