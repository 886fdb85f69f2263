#include "operations/TrashOperation.h"

#include <cerrno>
#include <exception>

#include "operations/FileOperationError.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "platform/MountTable.h"
#include "support/Paths.h"

namespace orbisk::TrashOperation {

namespace {

// Why the Trash refused an item with EBUSY: it is a mount point or holds one (the Trash checks
// that first); anything else busy is the system's own message.
FileOperationError busyItem(const std::filesystem::path& item)
{
    std::error_code error;
    const auto absolute = std::filesystem::absolute(item, error);
    const auto parent = std::filesystem::canonical(absolute.parent_path(), error);
    if (auto mounts = MountTable::read(); mounts && !error)
        if (const MountEntry* inside = mounts->mountAtOrBelow(parent / absolute.filename()))
            return FileOperationError::mountBoundary(
                item, inside->mountPoint == parent / absolute.filename() ? item : inside->mountPoint,
                FileOperationError::MountAction::trash);
    return FileOperationError::system(EBUSY, "move", item);
}

} // namespace

OperationReport run(const std::vector<std::filesystem::path>& items, const CancellationToken& cancellation,
                    OperationProgressTracker& progress)
{
    return run(items, cancellation, progress, Trash::forCurrentUser());
}

OperationReport run(const std::vector<std::filesystem::path>& items, const CancellationToken& cancellation,
                    OperationProgressTracker& progress, const Trash& trash)
{
    OperationReport report;
    progress.update([&](OperationProgress& p) {
        p.phase = OperationProgress::Phase::working;
        p.totalItems = static_cast<std::int64_t>(items.size());
    });
    for (const auto& given : items) {
        if (cancellation.isCancelled()) {
            report.cancelled = true;
            break;
        }
        // The report and the undo change name the place the kernel found, not the spelling given.
        const auto item = Paths::itemPath(given);
        progress.update([&](OperationProgress& p) { p.setCurrentPath(item.native()); });
        try {
            if (auto valid = ItemActions::validateItem(item); !valid) {
                report.failures.push_back({item, valid.error()});
            } else if (auto location = trash.moveToTrash(item)) {
                report.completed.push_back({item, *location});
                report.undoChanges.push_back(UndoChange::trashed(item, *location, ItemStamp::of(*location)));
            } else if (location.error() == EBUSY) {
                report.failures.push_back({item, busyItem(item)});
            } else if (location.error() == ENOENT) {
                report.failures.push_back({item, FileOperationError::itemMissing(item)});
            } else {
                report.failures.push_back({item, FileOperationError::system(location.error(), "move", item)});
            }
        } catch (const std::bad_alloc&) {
            // Nothing else throws here; what was done so far stays in the report.
            report.failures.push_back({item, FileOperationError::system(ENOMEM, "move", item)});
        }
        progress.update([](OperationProgress& p) { ++p.completedItems; });
    }
    progress.update([](OperationProgress& p) { p.phase = OperationProgress::Phase::finished; });
    return report;
}

} // namespace orbisk::TrashOperation
