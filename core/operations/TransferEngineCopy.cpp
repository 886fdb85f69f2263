// Copying one entry, depth first: folders, links and regular files through the file copier.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "operations/TransferEngine.h"
#include "platform/FileCopier.h"
#include "platform/OwnedFd.h"
#include "support/L10n.h"
#include "support/Translate.h"

namespace orbisk {

namespace fs = std::filesystem;

namespace {

bool isVolumeFull(int code)
{
    return code == ENOSPC || code == EDQUOT;
}

// Makes every folder under path writable and searchable again: a copied folder gets the source's
// mode after its contents, so a read-only one would refuse the removal of what is inside it.
void makeRemovable(const fs::path& path)
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return;
    ::chmod(path.c_str(), 0700);
    std::error_code error;
    for (fs::directory_iterator it(path, error), end; !error && it != end; it.increment(error))
        makeRemovable(it->path());
}

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
    constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    auto to = std::make_shared<const OwnedFd>(::open(destination.c_str(), folderFlags));
    if (!to->isOpen()) {
        fail(source, FileOperationError::system(errno, "create the folder", destination));
        removePartial(destination);
        return CopyResult::failed;
    }
    auto from = std::make_shared<const OwnedFd>(::open(source.c_str(), folderFlags));
    DIR* folder = from->isOpen() ? ::fdopendir(::dup(from->get())) : nullptr;
    if (!folder) {
        fail(source, FileOperationError::system(errno, "read", source));
        removePartial(destination);
        return CopyResult::failed;
    }
    progress_.update([](OperationProgress& p) { ++p.completedItems; });

    CopyResult result = CopyResult::copied;
    while (const dirent* entry = ::readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        if (cancellation_.isCancelled()) {
            result = CopyResult::cancelled;
            break;
        }
        fs::path child = source / entry->d_name;
        // Regular files, the bulk of most trees, are copied on the queue's threads; everything
        // else (and entries the file system gives no type for) here, one at a time.
        if (entry->d_type == DT_REG) {
            if (!queue_)
                queue_ = std::make_unique<FileCopyQueue>(FileCopyQueue::defaultWorkers(), queueProgress());
            const auto method = methodFrom_.try_emplace(device, copyOptions.firstMethod).first->second;
            CopyOptions options = copyOptions;
            options.firstMethod = method;
            queue_->push({from, to, std::move(child), destination / entry->d_name, options});
            result = takeQueuedCopies(recordForMove, false);
            if (result != CopyResult::copied)
                break;
            continue;
        }
        const CopyResult copied = copyEntry(child, destination / entry->d_name, recordForMove);
        if (copied == CopyResult::cancelled || copied == CopyResult::volumeFull) {
            result = copied;
            break;
        }
        // A failed entry is reported and stays behind in a move; its folder goes on without it.
        if (copied == CopyResult::failed && recordForMove)
            leftOnPurpose_.insert(child.native());
    }
    ::closedir(folder);
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
    std::error_code error;
    fs::remove_all(destination, error);
    if (error) {
        makeRemovable(destination);
        error.clear();
        fs::remove_all(destination, error);
    }
    if (error)
        fail(destination, FileOperationError::cleanupFailed(destination, error.message() + "."));
}

} // namespace orbisk
