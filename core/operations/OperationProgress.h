// Where a long operation stands: the counters its worker raises and the interface shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// A plain value compared field by field. A fresh one is `preparing` with zero counts and no totals.
struct OperationProgress {
    /// In the order an operation goes through them.
    enum class Phase {
        preparing, ///< counting what will be done
        working,
        finished,
    };

    Phase phase = Phase::preparing;
    std::int64_t completedItems = 0;
    std::optional<std::int64_t> totalItems;
    std::int64_t completedBytes = 0;
    std::optional<std::int64_t> totalBytes;
    std::optional<std::string> currentPath; ///< the path being worked on, as bytes

    /// Sets currentPath reusing its buffer, so that updates allocate nothing once it is large enough.
    void setCurrentPath(std::string_view path)
    {
        if (currentPath)
            currentPath->assign(path);
        else
            currentPath.emplace(path);
    }

    bool operator==(const OperationProgress&) const = default;
};

} // namespace orbisk
