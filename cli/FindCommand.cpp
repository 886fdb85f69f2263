// orbisk-cli find: the window's file search from the command line. One path per line (NUL-ended
// with -0), byte-exact, as found under FOLDER; with --containing also the line number and the
// first matching line ("path:12:text"). Unreadable folders and the result limit are told on stderr.
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <iostream>
#include <limits>

#include "Command.h"
#include "Interruption.h"
#include "support/DisplayText.h"
#include "tools/FileSearch.h"

namespace orbisk::cli {
namespace {

int runFind(std::span<const std::string> arguments);

const Command findCommand{
    "find",
    "find [--hidden] [--limit N] [-0] [--containing TEXT [--regex] [--case-sensitive]] FOLDER [PATTERN]",
    runFind,
};
const bool registered = registerCommand(findCommand);

struct Options {
    FileSearchOptions search;
    bool nulSeparated = false;
    std::vector<std::string> operands;
};

std::expected<Options, int> parse(std::span<const std::string> arguments)
{
    Options options;
    options.search.maxResults = std::numeric_limits<std::int64_t>::max();
    options.search.describeMatches = false; // only paths are printed
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto& argument = arguments[i];
        const auto value = [&]() -> const std::string* { return i + 1 < arguments.size() ? &arguments[++i] : nullptr; };
        if (!optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && argument == "--hidden") {
            options.search.includeHidden = true;
        } else if (!optionsEnded && argument == "-0") {
            options.nulSeparated = true;
        } else if (!optionsEnded && argument == "--regex") {
            options.search.regularExpression = true;
        } else if (!optionsEnded && argument == "--case-sensitive") {
            options.search.caseSensitive = true;
        } else if (!optionsEnded && argument == "--containing") {
            const auto* text = value();
            if (!text || text->empty())
                return std::unexpected(usageError(findCommand, "--containing takes a text"));
            options.search.containing = *text;
        } else if (!optionsEnded && argument == "--limit") {
            const auto* text = value();
            std::int64_t limit = 0;
            if (!text ||
                std::from_chars(text->data(), text->data() + text->size(), limit).ptr != text->data() + text->size() ||
                limit <= 0)
                return std::unexpected(usageError(findCommand, "--limit takes a count above 0"));
            options.search.maxResults = limit;
        } else if (!optionsEnded && argument.starts_with("-") && argument != "-") {
            return std::unexpected(usageError(findCommand, "unknown option " + DisplayText::visible(argument)));
        } else {
            options.operands.push_back(argument);
        }
    }
    if (options.operands.empty())
        return std::unexpected(usageError(findCommand, "which folder?"));
    if (options.operands.size() > 2)
        return std::unexpected(usageError(findCommand, "one folder and one pattern (quote a pattern with * or ?)"));
    if (options.operands.size() == 2)
        options.search.pattern = options.operands[1];
    if ((options.search.regularExpression || options.search.caseSensitive) && options.search.containing.empty())
        return std::unexpected(usageError(findCommand, "--regex and --case-sensitive go with --containing"));
    return options;
}

int runFind(std::span<const std::string> arguments)
{
    const auto options = parse(arguments);
    if (!options)
        return options.error();
    const std::string& folder = options->operands[0];

    CancellationToken token;
    const CancelOnInterrupt interrupts(token);
    std::string out;
    bool writeFailed = false;
    const auto flush = [&] {
        if (!out.empty() && std::fwrite(out.data(), 1, out.size(), stdout) != out.size())
            writeFailed = true;
        out.clear();
    };
    const auto summary = FileSearch::run(folder, options->search, token, [&](std::vector<FoundItem> batch) {
        for (const auto& found : batch) {
            out.append(found.item.urlBytes());
            if (found.content && !options->nulSeparated) {
                out.push_back(':');
                out.append(std::to_string(found.content->lineNumber));
                out.push_back(':');
                out.append(found.content->line);
            }
            out.push_back(options->nulSeparated ? '\0' : '\n');
        }
        // Lines reach a pipe as they are found, a batch at a time.
        flush();
        std::fflush(stdout);
        if (writeFailed)
            token.cancel(); // the reader went away (head -n 1): nothing more to do
    });
    flush();
    if (std::fflush(stdout) != 0)
        writeFailed = true;
    if (!summary) {
        std::cerr << "orbisk-cli find: the regular expression is not valid (" << summary.error().reason;
        if (summary.error().offset >= 0)
            std::cerr << " at character " << summary.error().offset + 1;
        std::cerr << ")\n";
        return exitUsage;
    }
    if (summary->unreadableFolders > 0)
        std::cerr << "orbisk-cli find: " << summary->unreadableFolders << " folders couldn’t be read\n";
    if (summary->unreadableFiles > 0)
        std::cerr << "orbisk-cli find: " << summary->unreadableFiles << " files couldn’t be read\n";
    if (summary->truncated)
        std::cerr << "orbisk-cli find: stopped at " << summary->matched << " results (result limit reached)\n";
    if (CancelOnInterrupt::interrupted()) {
        std::cerr << "orbisk-cli find: cancelled after " << summary->scanned << " items\n";
        return 130;
    }
    if (writeFailed)
        return exitFailure;
    if (::isatty(STDERR_FILENO))
        std::cerr << summary->matched << " found in " << summary->scanned << " items\n";
    return summary->unreadableFolders > 0 ? exitFailure : exitSuccess;
}

} // namespace
} // namespace orbisk::cli
