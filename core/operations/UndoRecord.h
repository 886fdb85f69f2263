// One operation's changes on disk, under the name Edit › Undo shows, and their JSON form.
#pragma once

#include <expected>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "operations/UndoChange.h"

namespace orbisk {

/// A plain value: the changes in the order the operation made them.
struct UndoRecord {
    std::string name; ///< what Undo is followed by in the menu, e.g. Rename “notes.txt”
    std::vector<UndoChange> changes;

    [[nodiscard]] bool isEmpty() const { return changes.empty(); }

    /// The record as JSON. Paths and the name keep their exact bytes: a byte that is not part of
    /// valid UTF-8, and "%" itself, are written as "%XX".
    [[nodiscard]] nlohmann::ordered_json toJson() const;

    /// Reads what toJson wrote. Strict: an unknown key or kind, a missing field or a bad escape
    /// makes the whole record unreadable, and the text says where.
    [[nodiscard]] static std::expected<UndoRecord, std::string> fromJson(const nlohmann::ordered_json& json);

    bool operator==(const UndoRecord&) const = default;
};

} // namespace orbisk
