#include "platform/DirectoryWatcher.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace orbisk {
namespace {

// What changes the listing: entries created, deleted, renamed in or out, or changed in place.
constexpr std::uint32_t contentsMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_MODIFY;
// What means the watched folder is no longer at its path. IN_IGNORED comes when the kernel drops
// the watch (the folder was deleted or its file system unmounted).
constexpr std::uint32_t goneMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

// Enough reads to drain a busy folder without starving the caller; what is left wakes it again.
constexpr int maximumReadsPerCall = 64;

} // namespace

std::optional<DirectoryWatcher> DirectoryWatcher::open(const std::filesystem::path& folder)
{
    const int descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    // IN_ONLYDIR refuses anything but a folder in the same call that resolves the path, so there is
    // no window between a check and the watch.
    const int watch = inotify_add_watch(descriptor, folder.c_str(),
                                        contentsMask | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_EXCL_UNLINK);
    if (watch < 0) {
        ::close(descriptor);
        return std::nullopt;
    }
    return DirectoryWatcher(descriptor, watch);
}

DirectoryWatcher::DirectoryWatcher(DirectoryWatcher&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), watch_(std::exchange(other.watch_, -1))
{
}

DirectoryWatcher& DirectoryWatcher::operator=(DirectoryWatcher&& other) noexcept
{
    if (this != &other) {
        cancel();
        descriptor_ = std::exchange(other.descriptor_, -1);
        watch_ = std::exchange(other.watch_, -1);
    }
    return *this;
}

DirectoryWatcher::~DirectoryWatcher()
{
    cancel();
}

void DirectoryWatcher::cancel()
{
    if (descriptor_ < 0)
        return;
    // Closing the inotify descriptor removes its watch and discards whatever was still queued.
    ::close(descriptor_);
    descriptor_ = -1;
    watch_ = -1;
}

std::optional<DirectoryWatcher::Event> DirectoryWatcher::readPendingEvents()
{
    if (descriptor_ < 0)
        return std::nullopt;
    alignas(inotify_event) char buffer[16 * 1024];
    bool changed = false;
    bool gone = false;
    for (int reads = 0; reads < maximumReadsPerCall; ++reads) {
        const ssize_t length = ::read(descriptor_, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            break; // EAGAIN: drained
        for (ssize_t offset = 0; offset < length;) {
            inotify_event event;
            std::memcpy(&event, buffer + offset, sizeof event);
            offset += static_cast<ssize_t>(sizeof event + event.len);
            if (event.wd != watch_ && !(event.mask & IN_Q_OVERFLOW))
                continue; // left over from the watch we dropped below
            if (event.mask & goneMask)
                gone = true;
            else
                changed = true; // including IN_Q_OVERFLOW: events were lost, so reload anyway
        }
    }
    if (gone) {
        // The watch would otherwise follow the folder to its new name and keep reporting from there.
        if (watch_ >= 0)
            inotify_rm_watch(descriptor_, watch_);
        watch_ = -1;
        return Event::directoryGone;
    }
    if (changed && watch_ >= 0)
        return Event::contentsChanged;
    return std::nullopt;
}

} // namespace orbisk
