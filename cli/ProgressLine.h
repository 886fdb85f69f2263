// The one-line progress display of long orbisk-cli commands on a terminal.
#pragma once

#include <mutex>
#include <thread>

#include "operations/OperationProgressTracker.h"

namespace orbisk::cli {

/// Redraws counts, bytes and the current item's name on stderr every 0.1 s while it lives, when
/// stderr is a terminal; clears the line when it goes away. Nothing at all otherwise. A command that
/// also asks questions on the terminal passes the lock it holds while asking.
class ProgressLine {
public:
    explicit ProgressLine(const OperationProgressTracker& tracker, std::mutex* terminal = nullptr);

private:
    std::jthread thread_;
};

} // namespace orbisk::cli
