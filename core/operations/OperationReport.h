// The outcome of one long file operation, item by item, handed over once when it ends.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "operations/ItemFailure.h"
#include "operations/TransferredItem.h"
#include "operations/UndoChange.h"

namespace orbisk {

/// Built by the worker while it runs; all lists empty, not cancelled, no abort reason at first.
struct OperationReport {
    std::vector<TransferredItem> completed;     ///< in the order the items finished
    std::vector<std::filesystem::path> skipped; ///< left alone by the user's or the rules' choice
    std::vector<ItemFailure> failures;          ///< items that failed; the operation went on
    bool cancelled = false;                     ///< the user stopped it before the end
    std::optional<std::string> abortReason;     ///< why it stopped early, when not the user's doing
    std::vector<UndoChange> undoChanges;        ///< what changed on disk, in order

    /// No failures, not cancelled, not aborted. Skips do not spoil success.
    [[nodiscard]] bool isCompleteSuccess() const { return failures.empty() && !cancelled && !abortReason; }
};

} // namespace orbisk
