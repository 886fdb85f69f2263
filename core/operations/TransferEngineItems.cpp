// Performing one item: a rename or a copy into a free name, a replacement, or a merge.
#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "operations/ItemStamp.h"
#include "operations/TransferEngine.h"
#include "platform/ExclusiveRename.h"
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
        // EXDEV: a bind mount shares the device number but not renames; copy and delete instead.
    }

    const std::size_t recordsBefore = copiedForMove_.size();
    if (!renamed) {
        const CopyResult copied = copyEntry(source, target, mode.move);
        if (copied != CopyResult::copied) {
            forgetRecordsFrom(recordsBefore);
            if (mode.move)
                leftOnPurpose_.insert(source.native());
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
    if (copyThenDelete) {
        // Recorded before its entries, so that the removal meets it after them and removes it
        // only when they are all gone.
        struct stat status {};
        if (::lstat(source.c_str(), &status) == 0)
            record(source, status);
    }

    DIR* folder = ::opendir(source.c_str());
    if (!folder) {
        fail(source, FileOperationError::system(errno, "read", source));
        if (mode.move)
            leftOnPurpose_.insert(source.native());
        return;
    }
    while (const dirent* entry = ::readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        if (cancellation_.isCancelled() || stopRequested_)
            break;
        const fs::path child = source / entry->d_name;
        progress_.update([&](OperationProgress& p) { p.setCurrentPath(child.native()); });
        performItem(child, existing, entry->d_name, mode, 1);
    }
    ::closedir(folder);
    if (cancellation_.isCancelled() || stopRequested_)
        return;

    if (mode.move && mode.useRename && ::rmdir(source.c_str()) != 0) {
        const int code = errno;
        fail(source, FileOperationError::sourceNotRemoved(source, FileOperationError::systemText(code) + "."));
    }
    report_.completed.push_back({source, existing});
}

} // namespace orbisk
