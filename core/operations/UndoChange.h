// One change an operation made on disk, recorded so that it can be undone.
#pragma once

#include <filesystem>
#include <optional>
#include <variant>

#include "operations/ItemStamp.h"

namespace orbisk {

/// A plain value of four cases; make them with created(), moved(), trashed() and removedFolder().
struct UndoChange {
    /// The operation created this item (a copy, a new folder or file).
    struct Created {
        std::filesystem::path at;
        std::optional<ItemStamp> stamp;
        bool operator==(const Created&) const = default;
    };
    /// The operation moved or renamed an item; the stamp is of the item at `to`.
    struct Moved {
        std::filesystem::path from;
        std::filesystem::path to;
        std::optional<ItemStamp> stamp;
        bool operator==(const Moved&) const = default;
    };
    /// The operation moved the item at `original` to the Trash, where it is at `inTrash`; the
    /// stamp is of the item there, so that another item trashed later under the same name is not
    /// taken for it (absent in records written before stamps were kept).
    struct Trashed {
        std::filesystem::path original;
        std::filesystem::path inTrash;
        std::optional<ItemStamp> stamp;
        bool operator==(const Trashed&) const = default;
    };

    /// The operation removed the empty folder at `at` (a merge that emptied it); undo makes it
    /// again, with this mode, for the items that go back into it.
    struct RemovedFolder {
        std::filesystem::path at;
        unsigned mode = 0755;
        bool operator==(const RemovedFolder&) const = default;
    };

    std::variant<Created, Moved, Trashed, RemovedFolder> change;

    [[nodiscard]] static UndoChange created(std::filesystem::path at, std::optional<ItemStamp> stamp)
    {
        return {Created{std::move(at), stamp}};
    }
    [[nodiscard]] static UndoChange moved(std::filesystem::path from, std::filesystem::path to,
                                          std::optional<ItemStamp> stamp)
    {
        return {Moved{std::move(from), std::move(to), stamp}};
    }
    [[nodiscard]] static UndoChange trashed(std::filesystem::path original, std::filesystem::path inTrash,
                                            std::optional<ItemStamp> stamp)
    {
        return {Trashed{std::move(original), std::move(inTrash), stamp}};
    }

    [[nodiscard]] static UndoChange removedFolder(std::filesystem::path at, unsigned mode)
    {
        return {RemovedFolder{std::move(at), mode}};
    }

    bool operator==(const UndoChange&) const = default;
};

} // namespace orbisk
