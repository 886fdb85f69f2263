#include "operations/TrashOperation.h"

#include <cerrno>
#include <exception>

#include "operations/FileOperationError.h"
#include "operations/ItemStamp.h"

namespace orbisk::TrashOperation {

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
    for (const auto& item : items) {
        if (cancellation.isCancelled()) {
            report.cancelled = true;
            break;
        }
        progress.update([&](OperationProgress& p) { p.setCurrentPath(item.native()); });
        try {
            if (auto location = trash.moveToTrash(item)) {
                report.completed.push_back({item, *location});
                report.undoChanges.push_back(UndoChange::trashed(item, *location, ItemStamp::of(*location)));
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
