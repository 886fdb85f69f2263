// Why undo left an item alone: it changed, it vanished, its old place is taken, the Trash lost it, or
// it is a created folder that still holds items undo left inside it.
#pragma once

#include <string>

namespace orbisk {

/// A plain value carrying the name its one message shows.
struct FileUndoError {
    enum class Kind {
        changedSince,  ///< the item is no longer as the operation left it
        missing,       ///< nothing is where the operation left the item
        placeTaken,    ///< another item now holds the place the item would go back to
        goneFromTrash, ///< the trashed item is no longer in the Trash
        keptFolder,    ///< a created folder still holds items undo left as they are, so it stayed
    };

    Kind kind = Kind::changedSince;
    std::string name; ///< the item's name, as bytes

    [[nodiscard]] static FileUndoError changedSince(std::string name) { return {Kind::changedSince, std::move(name)}; }
    [[nodiscard]] static FileUndoError missing(std::string name) { return {Kind::missing, std::move(name)}; }
    [[nodiscard]] static FileUndoError placeTaken(std::string name) { return {Kind::placeTaken, std::move(name)}; }
    [[nodiscard]] static FileUndoError goneFromTrash(std::string name)
    {
        return {Kind::goneFromTrash, std::move(name)};
    }

    [[nodiscard]] static FileUndoError keptFolder(std::string name) { return {Kind::keptFolder, std::move(name)}; }

    /// The localised message, the name made safe to show.
    [[nodiscard]] std::string errorDescription() const;

    bool operator==(const FileUndoError&) const = default;
};

} // namespace orbisk
