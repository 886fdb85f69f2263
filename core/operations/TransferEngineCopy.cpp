// Copying one entry, depth first: folders, links and regular files through the file copier.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "operations/TransferEngine.h"
#include "platform/FileCopier.h"
#include "platform/FolderListing.h"
#include "platform/OwnedFd.h"
#include "platform/TreeRemoval.h"
#include "support/L10n.h"
#include "support/Translate.h"

namespace orbisk {

namespace fs = std::filesystem;

namespace {

bool isVolumeFull(int code)
{
    return code == ENOSPC || code == EDQUOT;
}

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

TransferEngine::CopyResult TransferEngine::copyEntry(const fs::path& source, const fs::path& destination,
                                                     bool recordForMove)
{
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0) {
        fail(source, FileOperationError::itemMissing(source));
        return CopyResult::failed;
    }
    progress_.update([&](OperationProgress& p) { p.setCurrentPath(source.native()); });

    CopyResult result = CopyResult::copied;
    if (S_ISDIR(status.st_mode)) {
        // A folder is recorded before its entries, so that the removal meets it after them; a
        // folder whose copy was not made is forgotten again with everything recorded inside it,
        // so that the removal never takes a source that has no copy.
        const std::size_t mark = copiedForMove_.size();
        if (recordForMove)
            record(source, status);
        const CopyResult copied = copyFolder(source, status.st_dev, destination, recordForMove);
        if (copied != CopyResult::copied && recordForMove)
            forgetRecordsUnder(mark, source);
        return copied;
    }
    if (S_ISLNK(status.st_mode)) {
        if (auto copied = FileCopier::copyLink(source, destination); !copied) {
            const CopyError& error = copied.error();
            if (error.isVolumeFull()) {
                stopForFullVolume(error.code);
                return CopyResult::volumeFull;
            }
            const bool creating = error.step == CopyStep::createLink || error.step == CopyStep::createDestination ||
                                  error.step == CopyStep::rename;
            fail(source, FileOperationError::system(error.code, creating ? "create the link" : "copy the link",
                                                    creating ? destination : source));
            result = CopyResult::failed;
        }
    } else if (S_ISREG(status.st_mode)) {
        result = copyRegularFile(source, status, destination);
    } else {
        fail(source, FileOperationError::unsupportedFileType(source));
        result = CopyResult::failed;
    }
    if (result != CopyResult::copied)
        return result;
    if (recordForMove)
        record(source, status);
    progress_.update([](OperationProgress& p) { ++p.completedItems; });
    return result;
}

// Near the top of a tree a folder is read as it goes, with its source and destination folders
// held open for the file copies. Below foldersKeptOpen levels it is listed at once, its files
// are copied first, and its descriptors are given up before its subfolders are walked, so that
// however deep the tree, the run holds a bounded number of descriptors.
TransferEngine::CopyResult TransferEngine::copyFolder(const fs::path& source, dev_t device, const fs::path& destination,
                                                      bool recordForMove)
{
    if (auto created = FileCopier::createFolder(destination); !created) {
        if (isVolumeFull(created.error().code)) {
            stopForFullVolume(created.error().code);
            return CopyResult::volumeFull;
        }
        fail(source, FileOperationError::system(created.error().code, "create the folder", destination));
        return CopyResult::failed;
    }
    auto to = std::make_shared<const OwnedFd>(::open(destination.c_str(), folderFlags));
    struct stat toStatus {};
    if (!to->isOpen() || ::fstat(to->get(), &toStatus) != 0) {
        fail(source, FileOperationError::system(errno, "create the folder", destination));
        removePartial(destination);
        return CopyResult::failed;
    }
    writtenFolders_.insert({toStatus.st_dev, toStatus.st_ino});
    auto from = std::make_shared<const OwnedFd>(::open(source.c_str(), folderFlags));
    struct stat fromStatus {};
    const int listFd = from->isOpen() && ::fstat(from->get(), &fromStatus) == 0 ? ::dup(from->get()) : -1;
    const bool keep = openLevels_ < keptLevels_;
    auto listing = listFd >= 0 ? FolderListing::open(listFd, keep) : std::unexpected(errno);
    if (!listing) {
        fail(source, FileOperationError::system(listing.error(), "read", source));
        removePartial(destination);
        return CopyResult::failed;
    }
    // A source folder this run is writing into is the destination seen through another path.
    if (writtenFolders_.contains({fromStatus.st_dev, fromStatus.st_ino})) {
        fail(source, FileOperationError::destinationInsideSource(source, destination));
        removePartial(destination);
        return CopyResult::failed;
    }
    const OpenLevel level(openLevels_, keep);
    progress_.update([](OperationProgress& p) { ++p.completedItems; });

    CopyResult result = CopyResult::copied;
    std::vector<std::string> folders;
    const auto copyChild = [&](const std::string& name) {
        fs::path child = source / name;
        if (leaveMountedVolume(child, recordForMove))
            return true;
        const CopyResult copied = copyEntry(child, destination / name, recordForMove);
        if (copied == CopyResult::cancelled || copied == CopyResult::volumeFull) {
            result = copied;
            return false;
        }
        // A failed entry is reported and stays behind in a move; its folder goes on without it.
        if (copied == CopyResult::failed && recordForMove)
            leftOnPurpose_.insert(child.native());
        return true;
    };
    while (auto entry = listing->next()) {
        if (cancellation_.isCancelled()) {
            result = CopyResult::cancelled;
            break;
        }
        // Regular files, the bulk of most trees, are copied on the queue's threads; everything
        // else (and entries the file system gives no type for) here, one at a time.
        if (entry->type == DT_REG) {
            if (!queue_)
                queue_ = std::make_unique<FileCopyQueue>(FileCopyQueue::defaultWorkers(), queueProgress());
            const auto method = methodFrom_.try_emplace(device, copyOptions.firstMethod).first->second;
            CopyOptions options = copyOptions;
            options.firstMethod = method;
            queue_->push({from, to, source / entry->name, destination / entry->name, options});
            result = takeQueuedCopies(recordForMove, false);
            if (result != CopyResult::copied)
                break;
            continue;
        }
        if (!keep && (entry->type == DT_DIR || entry->type == DT_UNKNOWN)) {
            folders.push_back(std::move(entry->name));
            continue;
        }
        if (!copyChild(entry->name))
            break;
    }
    listing = std::unexpected(0); // closes a stream kept open
    if (!folders.empty() && result == CopyResult::copied) {
        result = takeQueuedCopies(recordForMove, true);
        from.reset();
        to.reset();
        for (const auto& name : folders) {
            if (result != CopyResult::copied)
                break;
            if (cancellation_.isCancelled()) {
                result = CopyResult::cancelled;
                break;
            }
            if (!copyChild(name))
                break;
        }
    }
    // The folder's own attributes go on after all of its entries are in, and a partial folder
    // is removed only once nothing is being copied into it any more.
    if (const CopyResult rest = takeQueuedCopies(recordForMove, true); result == CopyResult::copied)
        result = rest;

    if (result != CopyResult::copied) {
        // A folder copy that was cancelled or ran out of space is not a copy anyone asked for:
        // everything under it was made by this run and goes again.
        removePartial(destination);
        return result;
    }
    // A deep folder gave up its descriptor before its subfolders were walked: the one reopened by
    // name must be the folder that was copied, else the copy only takes the mode read at the start.
    if (!from) {
        from = std::make_shared<const OwnedFd>(::open(source.c_str(), folderFlags));
        struct stat again {};
        if (from->isOpen() && (::fstat(from->get(), &again) != 0 || again.st_dev != fromStatus.st_dev ||
                               again.st_ino != fromStatus.st_ino))
            from = std::make_shared<const OwnedFd>(-1);
        if (!from->isOpen()) {
            const OwnedFd copy(::open(destination.c_str(), folderFlags));
            if (copy.isOpen())
                (void)::fchmod(copy.get(), fromStatus.st_mode & 07777);
            fail(source, FileOperationError::system(ENOENT, "copy the attributes of", source));
            return CopyResult::copied;
        }
    }
    // Through the folder opened at the start: a source renamed meanwhile still gives its own
    // mode, and the copy never keeps the owner-only mode it was made with.
    if (auto copied = FileCopier::copyFolderMetadata(from->get(), destination); !copied) {
        if (isVolumeFull(copied.error().code)) {
            removePartial(destination);
            stopForFullVolume(copied.error().code);
            return CopyResult::volumeFull;
        }
        fail(source, FileOperationError::system(copied.error().code, "copy the attributes of", source));
    }
    return CopyResult::copied;
}

// Leaves out a folder where another volume is mounted, as "stay on this file system" copies do,
// and says so in the report. A move never gets here with one: it is refused before it starts.
bool TransferEngine::leaveMountedVolume(const fs::path& source, bool move)
{
    if (mountPoints_.empty() || !mountPoints_.contains(source.native()))
        return false;
    using Action = FileOperationError::MountAction;
    fail(source, FileOperationError::mountBoundary(source, source, move ? Action::move : Action::copy));
    if (move)
        leftOnPurpose_.insert(source.native());
    progress_.update([](OperationProgress& p) { ++p.completedItems; });
    return true;
}

// The first mount point at or inside folder, among those found while planning.
std::optional<fs::path> TransferEngine::mountPointIn(const fs::path& folder) const
{
    if (mountPoints_.contains(folder.native()))
        return folder;
    const std::string below = folder.native() + "/";
    const auto it = mountPoints_.lower_bound(below);
    if (it != mountPoints_.end() && it->starts_with(below))
        return fs::path(*it);
    return std::nullopt;
}

FileCopyQueue::Progress TransferEngine::queueProgress()
{
    return [this](const fs::path& source, std::int64_t newBytes) {
        if (cancellation_.isCancelled() || stopRequested_)
            return CopyControl::stop;
        // The path is shown once the file's first bytes are in: one update per chunk is all.
        if (newBytes > 0)
            progress_.update([&](OperationProgress& p) {
                p.setCurrentPath(source.native());
                p.completedBytes += newBytes;
            });
        return CopyControl::proceed;
    };
}

// Takes the finished copies off the queue in the order they were queued: all of them when `all`
// is set, otherwise a batch once the queue is full. Once the run is cancelled or the volume is
// full, the copies still under way stop at their next chunk and the rest is only waited for: the
// caller removes the folders they went into.
TransferEngine::CopyResult TransferEngine::takeQueuedCopies(bool recordForMove, bool all)
{
    CopyResult result = CopyResult::copied;
    if (!queue_ || (!all && !queue_->full()))
        return result;
    std::int64_t copied = 0;
    for (auto& done : queue_->takeFinished(all)) {
        if (result != CopyResult::copied)
            continue;
        const fs::path& source = done.job.source;
        if (done.result && *done.result == CopyOutcome::copied) {
            methodFrom_[done.status.st_dev] = done.learned;
            if (recordForMove)
                record(source, done.status);
            ++copied;
            continue;
        }
        result = done.result && stopRequested_ ? CopyResult::volumeFull : fileCopyFailed(source, done.result);
        if (result == CopyResult::failed) {
            // One file's failure: the folder goes on without it.
            if (recordForMove)
                leftOnPurpose_.insert(source.native());
            result = CopyResult::copied;
        }
    }
    progress_.update([&](OperationProgress& p) { p.completedItems += copied; });
    if (result != CopyResult::copied)
        (void)queue_->takeFinished(true);
    return result;
}

TransferEngine::CopyResult TransferEngine::copyRegularFile(const fs::path& source, const struct stat& status,
                                                           const fs::path& destination)
{
    std::int64_t fileBytes = 0;
    const auto onBytes = [&](std::int64_t done) {
        if (cancellation_.isCancelled())
            return CopyControl::stop;
        progress_.update([&](OperationProgress& p) { p.completedBytes += done - fileBytes; });
        fileBytes = done;
        return CopyControl::proceed;
    };
    const auto known = methodFrom_.try_emplace(status.st_dev, copyOptions.firstMethod).first;
    CopyOptions options = copyOptions;
    options.firstMethod = known->second;
    options.learnedMethod = &known->second;
    // The status was taken just now, in copyEntry, and decided that this is a regular file.
    const auto copied = FileCopier::copyFile(source, destination, onBytes, options, &status);
    if (copied && *copied == CopyOutcome::copied)
        return CopyResult::copied;
    return fileCopyFailed(source, copied);
}

// What a file copy that did not complete means for the run: a cancellation, a full volume that
// stops everything, or a failure of this file alone, which goes into the report.
TransferEngine::CopyResult TransferEngine::fileCopyFailed(const fs::path& source,
                                                          const std::expected<CopyOutcome, CopyError>& copied)
{
    if (copied) {
        cancellation_.cancel();
        report_.cancelled = true;
        return CopyResult::cancelled;
    }
    const CopyError& error = copied.error();
    if (error.kind == CopyError::Kind::unsupportedFileType) {
        fail(source, FileOperationError::unsupportedFileType(source));
    } else if (error.isVolumeFull()) {
        stopForFullVolume(error.code);
        return CopyResult::volumeFull;
    } else {
        fail(source, FileOperationError::system(error.code, "copy", source));
    }
    return CopyResult::failed;
}

void TransferEngine::stopForFullVolume(int code)
{
    stopRequested_ = true;
    if (!report_.abortReason)
        report_.abortReason =
            L(translate("Orbisk", "The destination volume is full (%@). Remaining items were not processed."),
              FileOperationError::systemText(code));
}

// Removes an incomplete copy this run made (a file, or a folder with what was copied into it).
void TransferEngine::removePartial(const fs::path& destination)
{
    if (auto removed = TreeRemoval::removeTree(destination, keptLevels_); !removed)
        fail(destination,
             FileOperationError::cleanupFailed(destination, FileOperationError::systemText(removed.error()) + "."));
}

} // namespace orbisk
