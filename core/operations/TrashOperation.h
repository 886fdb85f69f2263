// Moving a selection to the Trash as one operation with progress, cancellation and a report.
#pragma once

#include <filesystem>
#include <vector>

#include "operations/CancellationToken.h"
#include "operations/OperationProgressTracker.h"
#include "operations/OperationReport.h"
#include "platform/Trash.h"

namespace orbisk::TrashOperation {

/// Moves items to the Trash in order, on the calling (worker) thread. Each success adds
/// TransferredItem(item, its place in the trash) and the undo change trashed(item, that place);
/// each failure an ItemFailure (itemMissing for an item that is gone, invalidName for one ending in
/// "." or "..", else system(code, "move")) and the run goes on. Items are read as the kernel reads
/// them (Paths::itemPath), and the report names them so. Checks cancellation before each item and then leaves the rest
/// alone. Progress: totalItems at the start, then currentPath and completedItems per item, then finished.
[[nodiscard]] OperationReport run(const std::vector<std::filesystem::path>& items,
                                  const CancellationToken& cancellation, OperationProgressTracker& progress);

/// The same with a given trash (another home trash folder or mount table).
[[nodiscard]] OperationReport run(const std::vector<std::filesystem::path>& items,
                                  const CancellationToken& cancellation, OperationProgressTracker& progress,
                                  const Trash& trash);

} // namespace orbisk::TrashOperation
