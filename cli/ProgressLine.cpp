#include "ProgressLine.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "support/ByteCount.h"
#include "support/DisplayText.h"

namespace orbisk::cli {

namespace {

void draw(const OperationProgressTracker& tracker, std::mutex* terminal, const std::stop_token& stop)
{
    std::mutex unshared;
    std::mutex& lock = terminal ? *terminal : unshared;
    while (!stop.stop_requested()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        const OperationProgress p = tracker.snapshot();
        const std::lock_guard guard(lock);
        std::string line = std::to_string(p.completedItems);
        if (p.totalItems)
            line += "/" + std::to_string(*p.totalItems);
        line += " items, " + formatByteCount(p.completedBytes);
        if (p.totalBytes)
            line += " of " + formatByteCount(*p.totalBytes);
        if (p.currentPath)
            line += "  " + DisplayText::visible(std::filesystem::path(*p.currentPath).filename().native());
        std::fprintf(stderr, "\r\033[K%s", line.c_str());
        std::fflush(stderr);
    }
    const std::lock_guard guard(lock);
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
}

} // namespace

ProgressLine::ProgressLine(const OperationProgressTracker& tracker, std::mutex* terminal)
{
    if (::isatty(STDERR_FILENO))
        thread_ = std::jthread([&tracker, terminal](const std::stop_token& stop) { draw(tracker, terminal, stop); });
}

} // namespace orbisk::cli
