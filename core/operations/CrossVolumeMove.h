// Moving an item to another volume, where a rename cannot go: the transfer engine's checked move.
#pragma once

#include <filesystem>
#include <vector>

#include "operations/ItemFailure.h"

namespace orbisk::CrossVolumeMove {

/// What a move across volumes did.
struct Outcome {
    bool arrived = false;              ///< the item is at its new place now (perhaps without what is in problems)
    bool placeTaken = false;           ///< nothing was done: another item holds the new place
    std::vector<ItemFailure> problems; ///< what was left where it was, or failed, and why
};

/// Moves from (a file, link or whole folder; links are not followed) to the free name to on another
/// volume, through the transfer engine's copy-then-delete: nothing is ever overwritten, a failed
/// copy is removed again, and an original entry is removed only when it is still the very entry
/// that was copied. Whatever was added or changed in the original while it was being copied stays
/// there and is named in problems. Runs on the calling thread; not cancellable.
[[nodiscard]] Outcome move(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace orbisk::CrossVolumeMove
