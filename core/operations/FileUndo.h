// Undo and redo of file operations: reverses a record's changes where the items are as they were left.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <vector>

#include "operations/AnyError.h"
#include "operations/ItemFailure.h"
#include "operations/OperationReport.h"
#include "operations/UndoRecord.h"

namespace orbisk {

/// What a revert did: the record that redoes it, what it left alone and why, and the changes it
/// could not reverse, which stay to be undone once their problems are solved.
struct UndoOutcome {
    UndoRecord inverse;
    std::vector<ItemFailure> problems;
    UndoRecord remaining;

    [[nodiscard]] bool isComplete() const { return problems.empty(); }
};

namespace FileUndo {

/// Moves an item to the Trash and says where it went.
using TrashService = std::function<std::expected<std::filesystem::path, AnyError>(const std::filesystem::path&)>;

/// Reverses record's changes, the last first, each on its own: a created item goes to the Trash, a
/// moved item goes back, a trashed item comes back from the Trash. Only items still exactly as the
/// operation left them are touched (FileUndoError::changedSince, missing); nothing is ever
/// overwritten (placeTaken) and nothing is deleted outright. Renames that form a chain or a swap
/// within the record pass through hidden ".orbisk-undo-<uuid>" names in their folders, which are
/// gone again afterwards. An item whose old place is on another volume goes there by the transfer
/// engine's copy-then-delete: what was added or changed meanwhile stays where it was, and is named.
/// A folder the operation removed is made again, and so is a missing folder that a moved item
/// goes back into; both count as created in the inverse, so that redo takes them away again.
/// The inverse has the record's name and the changes in the order they were made here, so that
/// reverting it redoes the record; `remaining` has the record's name and the changes not reversed,
/// in their order. Runs synchronously on the calling (worker) thread.
[[nodiscard]] UndoOutcome revert(const UndoRecord& record, const TrashService& trash);

/// The outcome as an operation's report, as the window and the command line show it: each change of
/// the inverse is a completed item, each problem a failure, the inverse's changes its undo changes.
[[nodiscard]] OperationReport reportOf(UndoOutcome outcome);

/// The Trash of the item's volume (the freedesktop.org Trash), as used everywhere else.
[[nodiscard]] TrashService systemTrash();

} // namespace FileUndo

} // namespace orbisk
