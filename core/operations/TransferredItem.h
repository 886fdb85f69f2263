// One item an operation processed: where it was and where it is now.
#pragma once

#include <filesystem>

namespace orbisk {

/// A plain value; equal when both locations are.
struct TransferredItem {
    std::filesystem::path source;      ///< the location that was processed
    std::filesystem::path destination; ///< where the item is now

    bool operator==(const TransferredItem&) const = default;
};

} // namespace orbisk
