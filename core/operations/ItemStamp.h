// What an item looked like when an operation left it, so that undo can tell whether it changed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace orbisk {

/// Read from the item's status without following links.
struct ItemStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool isDirectory = false;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< nanoseconds since the epoch

    /// The stamp of the entry at path itself (a link is not followed), or nothing when its status
    /// cannot be read.
    [[nodiscard]] static std::optional<ItemStamp> of(const std::filesystem::path& path);

    /// Whether other is this same item, unchanged: same device and inode, and then either both
    /// folders (their contents do not count) or both not folders with the same size and
    /// modification time to the nanosecond. False when other is absent.
    [[nodiscard]] bool matches(const std::optional<ItemStamp>& other) const;

    bool operator==(const ItemStamp&) const = default;
};

} // namespace orbisk
