// Performing one item: a rename or a copy into a free name, a replacement, or a merge.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "operations/ItemStamp.h"
#include "operations/TransferEngine.h"
#include "platform/ExclusiveRename.h"
#include "platform/FolderListing.h"
#include "support/Translate.h"

namespace orbisk {

namespace fs = std::filesystem;

void TransferEngine::performItem(const fs::path& source, const fs::path& folder, const std::string& name, Mode mode,
                                 std::int64_t itemCount)
{
    struct stat sourceStatus {};
    if (::lstat(source.c_str(), &sourceStatus) != 0) {
        fail(source, FileOperationError::itemMissing(source));
        return;
    }

    fs::path target = folder / name;
    std::optional<Replacement> replacement;
    struct stat existing {};
    if (::lstat(target.c_str(), &existing) == 0) {
        Resolution resolution = resolveClash(source, sourceStatus, target, existing, itemCount);
        switch (resolution.kind) {
        case Resolution::Kind::stop: return;
        case Resolution::Kind::merge: mergeInto(source, resolution.url, mode); return;
        case Resolution::Kind::use: target = std::move(resolution.url); break;
        case Resolution::Kind::replace: {
            auto temporary = freeReplacingName(folder, name);
            if (!temporary) {
                fail(source, FileOperationError::system(EEXIST, mode.move ? "move" : "copy", source));
                return;
            }
            replacement = Replacement{target, resolution.renamingExisting};
            target = std::move(*temporary);
            break;
        }
        }
    }

    bool renamed = false;
    if (mode.useRename) {
        auto result = ExclusiveRename::rename(source, target);
        if (result) {
            renamed = true;
        } else if (result.error() != EXDEV) {
            fail(source, FileOperationError::system(result.error(), "move", source));
            return;
        }
        // EXDEV: a bind mount shares the device number but not renames; copy and delete instead,
        // unless that would copy and then empty another volume mounted inside.
        if (!renamed) {
            if (const auto mountPoint = mountPointIn(source)) {
                fail(source,
                     FileOperationError::mountBoundary(source, *mountPoint, FileOperationError::MountAction::move));
                leftOnPurpose_.insert(source.native());
                return;
            }
        }
    }

    const std::size_t recordsBefore = copiedForMove_.size();
    if (!renamed) {
        const std::size_t failuresBefore = report_.failures.size();
        const CopyResult copied = copyEntry(source, target, mode.move);
        if (copied != CopyResult::copied) {
            forgetRecordsFrom(recordsBefore);
            if (mode.move)
                leftOnPurpose_.insert(source.native());
            return;
        }
        // A replacement is all or nothing: the old item gives way only to a complete copy.
        if (replacement && report_.failures.size() != failuresBefore) {
            forgetRecordsFrom(recordsBefore);
            if (mode.move)
                leftOnPurpose_.insert(source.native());
            removePartial(target);
            fail(source, FileOperationError::cannotReplace(
                             name, translate("Orbisk", "not everything inside it could be copied. The existing item "
                                                       "was left unchanged.")));
            return;
        }
    }

    fs::path final = target;
    if (replacement) {
        if (!finishReplacement(*replacement, target, source, renamed)) {
            forgetRecordsFrom(recordsBefore);
            if (mode.move && !renamed)
                leftOnPurpose_.insert(source.native());
            return;
        }
        final = replacement->existing;
    }
    recordSuccess(source, final, mode.move);
}

void TransferEngine::recordSuccess(const fs::path& source, const fs::path& final, bool moved)
{
    report_.completed.push_back({source, final});
    auto stamp = ItemStamp::of(final);
    report_.undoChanges.push_back(moved ? UndoChange::moved(source, final, stamp) : UndoChange::created(final, stamp));
}

// Each entry of the source folder goes into the existing folder like a top-level item, its own
// clashes resolved the same way. The folder listing is read as it goes, so memory stays flat.
void TransferEngine::mergeInto(const fs::path& source, const fs::path& existing, Mode mode)
{
    const bool copyThenDelete = mode.move && !mode.useRename;
    struct stat status {};
    const bool seen = ::lstat(source.c_str(), &status) == 0;
    if (copyThenDelete && seen) {
        // Recorded before its entries, so that the removal meets it after them and removes it
        // only when they are all gone.
        record(source, status);
        mergedSources_.insert(source.native());
    }

    // Deep below the kept levels the listing is read at once, so that it holds no descriptor
    // while the entries are merged.
    const bool keep = openLevels_ < keptLevels_;
    auto folder = FolderListing::open(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), keep);
    struct stat into {};
    if (folder && ::stat(existing.c_str(), &into) == 0)
        writtenFolders_.insert({into.st_dev, into.st_ino});
    struct stat from {};
    if (folder && ::lstat(source.c_str(), &from) == 0 && writtenFolders_.contains({from.st_dev, from.st_ino}) &&
        (from.st_dev != into.st_dev || from.st_ino != into.st_ino))
        folder = std::unexpected(ELOOP);
    if (!folder) {
        if (folder.error() == ELOOP)
            fail(source, FileOperationError::destinationInsideSource(source, existing));
        else
            fail(source, FileOperationError::system(folder.error(), "read", source));
        if (mode.move)
            leftOnPurpose_.insert(source.native());
        return;
    }
    const OpenLevel level(openLevels_, keep);
    while (auto entry = folder->next()) {
        if (cancellation_.isCancelled() || stopRequested_)
            break;
        const fs::path child = source / entry->name;
        if (leaveMountedVolume(child, mode.move))
            continue;
        progress_.update([&](OperationProgress& p) { p.setCurrentPath(child.native()); });
        performItem(child, existing, entry->name, mode, 1);
    }
    folder = std::unexpected(0);
    if (cancellation_.isCancelled() || stopRequested_) {
        // What was merged so far is finished; the folder stays with the rest.
        if (mode.move)
            leftOnPurpose_.insert(source.native());
        return;
    }

    if (mode.move && mode.useRename) {
        // The emptied folder goes, and undo must know to bring it back for its entries.
        if (::rmdir(source.c_str()) == 0) {
            report_.undoChanges.push_back(UndoChange::removedFolder(source, seen ? status.st_mode & 07777 : 0755));
        } else {
            const int code = errno;
            fail(source, FileOperationError::sourceNotRemoved(source, FileOperationError::systemText(code) + "."));
        }
    }
    report_.completed.push_back({source, existing});
}

} // namespace orbisk
