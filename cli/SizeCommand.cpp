// orbisk-cli size: how much a folder holds, counted as the window's folder sizes count it, and
// with --breakdown what each child takes, largest first.
// A line per folder: the size ("12.3 MB", or bytes with --bytes), files, folders, unreadable items
// when there are any, and the folder as given. Children under it with their share of the total.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <iostream>
#include <optional>

#include "Command.h"
#include "Interruption.h"
#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "tools/FolderBreakdown.h"
#include "tools/FolderSize.h"

namespace orbisk::cli {
namespace {

int runSize(std::span<const std::string> arguments);

const Command sizeCommand{"size", "size [--bytes] [--breakdown] FOLDER...", runSize};
const bool registered = registerCommand(sizeCommand);

struct Options {
    bool bytes = false;
    bool breakdown = false;
    std::vector<std::string> folders;
};

/// Rewrites one line on stderr, at most ten times a second, while a long measurement runs.
class ProgressLine {
public:
    ProgressLine() : enabled_(::isatty(STDERR_FILENO) != 0) {}
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const FolderSize::Result& running)
    {
        if (!enabled_)
            return;
        const auto now = std::chrono::steady_clock::now();
        if (now - last_ < std::chrono::milliseconds(100))
            return;
        last_ = now;
        std::fprintf(stderr, "\r\033[KMeasuring… %s, %" PRId64 " files, %" PRId64 " folders",
                     formatByteCount(running.bytes).c_str(), running.files, running.folders);
        shown_ = true;
    }

    void clear()
    {
        if (shown_)
            std::fprintf(stderr, "\r\033[K");
        shown_ = false;
    }

private:
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point last_{};
};

std::string sizeText(std::int64_t bytes, bool exact)
{
    return exact ? std::to_string(bytes) : formatByteCount(bytes);
}

std::string countsText(const FolderSize::Result& size, bool exact)
{
    std::string text = sizeText(size.bytes, exact) + "  " + std::to_string(size.files) +
                       (size.files == 1 ? " file  " : " files  ") + std::to_string(size.folders) +
                       (size.folders == 1 ? " folder" : " folders");
    if (size.unreadable > 0)
        text += "  " + std::to_string(size.unreadable) + " unreadable";
    return text;
}

void printBreakdown(const FolderBreakdown::Report& report, bool exact)
{
    auto entries = report.entries;
    std::ranges::stable_sort(entries, std::ranges::greater{}, [](const auto& e) { return e.size.bytes; });
    for (const auto& entry : entries) {
        char share[16];
        std::snprintf(share, sizeof share, "%5.1f%%", 100.0 * report.share(entry));
        std::string line = std::string("  ") + share + "  " + sizeText(entry.size.bytes, exact) + "  " +
                           DisplayText::visible(entry.name);
        if (entry.isDirectory)
            line += "/";
        if (entry.isSymbolicLink)
            line += "  (link, not followed)";
        if (entry.isOtherVolume)
            line += "  (another volume, not counted)";
        if (entry.size.unreadable > 0)
            line += "  (" + std::to_string(entry.size.unreadable) + " unreadable)";
        std::cout << line << "\n";
    }
}

int runSize(std::span<const std::string> arguments)
{
    Options options;
    bool optionsEnded = false;
    for (const auto& argument : arguments) {
        if (!optionsEnded && argument == "--")
            optionsEnded = true;
        else if (!optionsEnded && argument == "--bytes")
            options.bytes = true;
        else if (!optionsEnded && argument == "--breakdown")
            options.breakdown = true;
        else if (!optionsEnded && argument.starts_with("-") && argument != "-")
            return usageError(sizeCommand, "unknown option " + DisplayText::visible(argument));
        else
            options.folders.push_back(argument);
    }
    if (options.folders.empty())
        return usageError(sizeCommand, "which folder?");

    CancellationToken token;
    const CancelOnInterrupt interrupts(token);
    int status = exitSuccess;
    for (const auto& folder : options.folders) {
        ProgressLine progress;
        FolderSize::Result total;
        std::optional<FolderBreakdown::Report> report;
        if (options.breakdown) {
            report = FolderBreakdown::compute(folder, token, [&](const FolderBreakdown::Report& now) {
                FolderSize::Result running;
                for (const auto& e : now.entries)
                    running += e.size;
                progress.show(running);
            });
            if (report->readError) {
                progress.clear();
                std::cerr << "orbisk-cli size: cannot read “" << DisplayText::visible(folder)
                          << "”: " << report->readError.message() << "\n";
                status = exitFailure;
                continue;
            }
            for (const auto& e : report->entries)
                total += e.size;
        } else {
            total = FolderSize::compute(folder, token, [&](const FolderSize::Result& now) { progress.show(now); });
        }
        progress.clear();
        if (token.isCancelled()) {
            std::cout << std::flush;
            std::cerr << "orbisk-cli size: cancelled; “" << DisplayText::visible(folder)
                      << "” measured so far: " << countsText(total, options.bytes) << "\n";
            return 130;
        }
        std::cout << countsText(total, options.bytes) << "  " << DisplayText::visible(folder) << "\n";
        if (report)
            printBreakdown(*report, options.bytes);
        if (total.unreadable > 0)
            status = exitFailure;
    }
    std::cout << std::flush;
    return status;
}

} // namespace
} // namespace orbisk::cli
