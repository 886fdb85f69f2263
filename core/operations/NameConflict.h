// A name clash as the conflict handler sees it, and the handler's answer.
#pragma once

#include <filesystem>

#include "operations/ConflictChoice.h"

namespace orbisk {

/// Handed to the conflict handler when an incoming item meets an existing one of the same name.
struct NameConflict {
    std::filesystem::path source;
    std::filesystem::path existing;
    bool isSameItem = false; ///< both are the same file-system object: only safe choices apply
    bool sourceIsDirectory = false;
    bool existingIsDirectory = false;
    bool canMerge = false; ///< both are real folders and neither contains the other

    bool operator==(const NameConflict&) const = default;
};

/// The handler's answer; applyToRemaining makes it the answer to every later clash of the run.
struct ConflictDecision {
    ConflictChoice choice = ConflictChoice::cancel;
    bool applyToRemaining = false;

    bool operator==(const ConflictDecision&) const = default;
};

} // namespace orbisk
