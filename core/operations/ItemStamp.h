// What an item looked like when an operation left it, so that undo can tell whether it changed.
#pragma once

#include <cstdint>

namespace orbisk {

/// Read from the item's status without following links.
struct ItemStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool isDirectory = false;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< nanoseconds since the epoch

    bool operator==(const ItemStamp&) const = default;
};

} // namespace orbisk
