// The free-space check: the bytes a copy will really write, against what the volume has.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "operations/TransferEngine.h"
#include "platform/FolderListing.h"
#include "platform/OwnedFd.h"
#include "support/Paths.h"

namespace orbisk {

namespace fs = std::filesystem;

// What copying one regular file writes. The copier keeps holes, so a file with fewer blocks than
// bytes is measured by its data extents (a 4 GiB image with 4 KiB in it writes 4 KiB). Every name
// of a hard-linked file counts in full, since the copier writes each name as a file of its own.
std::int64_t TransferEngine::countFile(int folderFd, const char* name, const struct stat& status)
{
    const std::int64_t allocated = static_cast<std::int64_t>(status.st_blocks) * 512;
    if (allocated >= status.st_size)
        return status.st_size;
    // Fewer blocks than bytes: holes, or a file system that compresses or reports no blocks.
    // Only the data extents tell which, and only those are written.
    OwnedFd file(::openat(folderFd, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen())
        return status.st_size;
    std::int64_t data = 0;
    off_t at = 0;
    while (at < status.st_size) {
        const off_t start = ::lseek(file.get(), at, SEEK_DATA);
        if (start < 0)
            break; // ENXIO: only a hole is left
        const off_t end = ::lseek(file.get(), start, SEEK_HOLE);
        if (end < 0)
            return status.st_size;
        data += end - start;
        at = end;
    }
    return std::min<std::int64_t>(data, status.st_size);
}

// Refuses, before anything is touched, a copy that cannot fit. Plans are counted as found first;
// only when that is too much are the clashes looked at, since what a standing Skip or Merge leaves
// alone is never written. The count is what is certain to be written: a clash that will be asked
// about may be skipped, and an answer that writes more meets the out-of-space handling of the copy.
bool TransferEngine::hasRoomFor(const std::vector<Plan>& plans)
{
    std::int64_t needed = 0;
    for (const auto& plan : plans)
        if (!plan.useRename)
            needed += plan.writeBytes;
    if (needed == 0)
        return true;
    const auto capacity = Paths::volumeCapacity(destinationDirectory_);
    if (!capacity || needed <= capacity->available)
        return true;

    needed = 0;
    for (const auto& plan : plans) {
        if (cancellation_.isCancelled())
            return true; // the item loop sees it and stops
        if (!plan.useRename)
            needed += bytesToWrite(plan.source, destinationDirectory_ / plan.targetName);
    }
    if (needed <= capacity->available)
        return true;
    report_.abortReason = FileOperationError::insufficientSpace(needed, capacity->available).errorDescription();
    return false;
}

// What copying source to target writes, target being where it lands (or nothing once it is known
// that nothing is there to clash with).
std::int64_t TransferEngine::bytesToWrite(const fs::path& source, std::optional<fs::path> target)
{
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0)
        return 0;
    struct stat existing {};
    if (target && ::lstat(target->c_str(), &existing) == 0) {
        const bool merges = S_ISDIR(status.st_mode) && S_ISDIR(existing.st_mode) &&
                            (mergeFolders || conflictPolicy == ConflictChoice::merge);
        if (!merges) {
            const bool writes = conflictPolicy == ConflictChoice::replace ||
                                conflictPolicy == ConflictChoice::keepBoth ||
                                conflictPolicy == ConflictChoice::renameExisting;
            if (!writes)
                return 0;
            target.reset();
        }
    } else {
        target.reset();
    }
    if (S_ISREG(status.st_mode))
        return countFile(AT_FDCWD, source.c_str(), status);
    if (!S_ISDIR(status.st_mode) || mountPoints_.contains(source.native()))
        return 0;

    const bool keep = openLevels_ < keptLevels_;
    auto listing = FolderListing::open(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), keep);
    if (!listing)
        return 0;
    if (keep)
        ++openLevels_;
    std::int64_t bytes = 0;
    while (auto entry = listing->next())
        bytes += bytesToWrite(source / entry->name, target ? std::optional(*target / entry->name) : std::nullopt);
    if (keep)
        --openLevels_;
    return bytes;
}

} // namespace orbisk
