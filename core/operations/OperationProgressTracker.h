// The one progress value a worker writes and the interface reads, behind its own lock.
#pragma once

#include <mutex>

#include "operations/OperationProgress.h"

namespace orbisk {

/// Shared between a worker and the interface (hold it in a shared_ptr). Thread-safe.
class OperationProgressTracker {
public:
    OperationProgressTracker() = default;
    OperationProgressTracker(const OperationProgressTracker&) = delete;
    OperationProgressTracker& operator=(const OperationProgressTracker&) = delete;

    /// Runs change(OperationProgress&) under the lock, so that fields changed together are seen
    /// together. Allocates nothing itself: cheap enough for every copied chunk. change must not
    /// touch the disk or call back into the tracker.
    template <class Change> void update(Change&& change)
    {
        std::lock_guard guard(lock_);
        change(value_);
    }

    /// A copy of the current value, for the interface's timer.
    [[nodiscard]] OperationProgress snapshot() const
    {
        std::lock_guard guard(lock_);
        return value_;
    }

private:
    mutable std::mutex lock_;
    OperationProgress value_;
};

} // namespace orbisk
