// Ctrl+C (and SIGTERM) as a cancel of the running operation instead of the end of the process.
#pragma once

#include "operations/CancellationToken.h"

namespace orbisk::cli {

/// While alive, SIGINT and SIGTERM cancel token; the previous handlers come back on destruction.
/// One at a time per process.
class InterruptCancels {
public:
    explicit InterruptCancels(CancellationToken& token);
    ~InterruptCancels();
    InterruptCancels(const InterruptCancels&) = delete;
    InterruptCancels& operator=(const InterruptCancels&) = delete;

    /// Whether a signal arrived.
    [[nodiscard]] static bool interrupted();
};

} // namespace orbisk::cli
