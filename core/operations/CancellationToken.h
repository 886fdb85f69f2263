// The user's "stop" for one long operation: set by the interface, polled by the worker.
#pragma once

#include <atomic>

namespace orbisk {

/// Shared between the thread that starts an operation and its worker (hold it in a shared_ptr).
/// Once cancelled it stays cancelled: a token serves one operation only. Thread-safe.
class CancellationToken {
public:
    CancellationToken() = default;
    CancellationToken(const CancellationToken&) = delete;
    CancellationToken& operator=(const CancellationToken&) = delete;

    /// Asks the operation to stop at its next check; it cannot be taken back.
    void cancel() { cancelled_ = true; }

    /// Whether cancel() was called; workers ask between items and between chunks of a file.
    [[nodiscard]] bool isCancelled() const { return cancelled_; }

private:
    std::atomic<bool> cancelled_ = false;
};

} // namespace orbisk
