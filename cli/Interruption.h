// Ctrl+C during a long orbisk-cli command: the operation is cancelled, not the process killed.
#pragma once

#include "operations/CancellationToken.h"

namespace orbisk::cli {

/// While it lives, SIGINT, SIGTERM and SIGHUP cancel token instead of ending the program, so that
/// the operation stops at its next check and cleans up after itself (no partial archive, no
/// staging folder). A second Ctrl+C also only cancels. The previous handlers come back afterwards.
class CancelOnInterrupt {
public:
    explicit CancelOnInterrupt(CancellationToken& token);
    ~CancelOnInterrupt();
    CancelOnInterrupt(const CancelOnInterrupt&) = delete;
    CancelOnInterrupt& operator=(const CancelOnInterrupt&) = delete;

    /// Whether a signal arrived.
    [[nodiscard]] static bool interrupted();
};

} // namespace orbisk::cli
