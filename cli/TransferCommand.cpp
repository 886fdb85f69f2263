// orbisk-cli copy|move: the transfer engine from the command line, destination read like the dialog's.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <thread>

#include "ArgumentPaths.h"
#include "Command.h"
#include "Interruption.h"
#include "Problems.h"
#include "ProgressLine.h"
#include "RecordFile.h"
#include "operations/RenameMask.h"
#include "operations/TransferEngine.h"
#include "operations/TransferTarget.h"
#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"

namespace orbisk::cli {
namespace {

namespace fs = std::filesystem;

int runCopy(std::span<const std::string> arguments);
int runMove(std::span<const std::string> arguments);

constexpr std::string_view options = "[--policy skip|keepBoth|replace|replaceIfOlder|replaceIfDifferent|"
                                     "renameExisting|merge] [--merge-folders] [--record FILE] SOURCE... DESTINATION";
const std::string copyUsage = "copy " + std::string(options);
const std::string moveUsage = "move " + std::string(options);
const Command copyCommand{"copy", copyUsage, &runCopy};
const Command moveCommand{"move", moveUsage, &runMove};
const bool registered = registerCommand(copyCommand) && registerCommand(moveCommand);

// Serialises the progress line and the clash question on the terminal.
std::mutex terminalLock;

// Asks about one clash on the terminal; a capital letter applies the answer to the rest.
ConflictDecision askOnTerminal(const NameConflict& conflict)
{
    std::lock_guard guard(terminalLock);
    std::FILE* tty = std::fopen("/dev/tty", "r+");
    if (!tty)
        return {};
    std::string question;
    std::string keys;
    if (conflict.isSameItem) {
        question = L(translate("Orbisk", "Source and destination are the same item:\n%@\n\nKeep Both makes a copy "
                                         "with a new name. Nothing is overwritten."),
                     conflict.source);
        question += "\n[k] Keep Both  [s] Skip  [c] Cancel";
        keys = "ksc";
    } else {
        question = L(translate("Orbisk", "An item named “%@” already exists in “%@”."),
                     conflict.existing.filename().native(), conflict.existing.parent_path().filename().native());
        question += "\n[k] Keep Both  [s] Skip  [r] Replace  [o] Replace if Older  [d] Replace if Different"
                    "  [e] Rename Existing";
        keys = "ksrode";
        if (conflict.canMerge) {
            question += "  [m] Merge";
            keys += 'm';
        }
        question += "  [c] Cancel";
        keys += 'c';
    }
    std::fprintf(tty, "\r\033[K%s\n(a capital letter answers every remaining clash) > ", question.c_str());
    std::fflush(tty);
    char line[64];
    ConflictDecision decision;
    while (std::fgets(line, sizeof line, tty)) {
        const char key = line[0];
        const char lower = static_cast<char>(key >= 'A' && key <= 'Z' ? key - 'A' + 'a' : key);
        if (lower != 0 && keys.find(lower) != std::string::npos) {
            static constexpr std::pair<char, ConflictChoice> choices[] = {{'k', ConflictChoice::keepBoth},
                                                                          {'s', ConflictChoice::skip},
                                                                          {'r', ConflictChoice::replace},
                                                                          {'o', ConflictChoice::replaceIfOlder},
                                                                          {'d', ConflictChoice::replaceIfDifferent},
                                                                          {'e', ConflictChoice::renameExisting},
                                                                          {'m', ConflictChoice::merge},
                                                                          {'c', ConflictChoice::cancel}};
            for (const auto& [letter, choice] : choices)
                if (letter == lower)
                    decision.choice = choice;
            decision.applyToRemaining = key != lower;
            break;
        }
        std::fprintf(tty, "> ");
        std::fflush(tty);
    }
    std::fclose(tty);
    return decision;
}

int runTransfer(const Command& command, TransferEngine::Kind kind, std::span<const std::string> arguments)
{
    std::optional<ConflictChoice> policy;
    bool mergeFolders = false;
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--") {
            rest.insert(rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.end());
            break;
        }
        if (argument == "--merge-folders") {
            mergeFolders = true;
        } else if (argument == "--policy" || argument.starts_with("--policy=")) {
            std::string word = argument.size() > 8 ? argument.substr(9) : std::string();
            if (argument == "--policy") {
                if (i + 1 == arguments.size())
                    return usageError(command, "--policy needs a choice");
                word = arguments[++i];
            }
            policy = conflictChoiceFromRaw(word);
            if (!policy || *policy == ConflictChoice::cancel)
                return usageError(command, "unknown policy “" + DisplayText::visible(word) + "”");
        } else {
            rest.push_back(argument);
        }
    }
    auto parsed = parseRecordArguments(rest);
    if (!parsed)
        return usageError(command, parsed.error());
    if (parsed->positional.size() < 2)
        return usageError(command, "needs at least one source and a destination");
    auto items = itemArguments(std::span(parsed->positional).first(parsed->positional.size() - 1));
    if (!items)
        return usageError(command, items.error());
    if (!loadHistory(parsed->recordFile))
        return exitFailure;

    // Arguments are exact paths: the destination is read like the dialog's, but without "~" or trimming.
    const std::vector<fs::path> sources = std::move(*items);
    auto target = TransferTargetResolver::resolvePath(parsed->positional.back(), fs::current_path(), sources.size());
    std::map<fs::path, std::string> targetNames;
    fs::path folder;
    if (target) {
        if (const auto* into = std::get_if<TransferTarget::Into>(&target->value)) {
            folder = into->folder;
        } else if (const auto* renamed = std::get_if<TransferTarget::Renamed>(&target->value)) {
            folder = renamed->folder;
            targetNames[sources.front()] = renamed->name;
        } else if (const auto* masked = std::get_if<TransferTarget::Masked>(&target->value)) {
            folder = masked->folder;
            std::vector<std::string> names;
            for (const auto& source : sources)
                names.push_back(source.filename().native());
            auto newNames = RenameMask::apply(masked->mask, names);
            if (!newNames)
                return presentError(translate("Orbisk", "Invalid destination."), newNames.error());
            for (std::size_t i = 0; i < sources.size(); ++i)
                targetNames[sources[i]] = (*newNames)[i];
        }
    } else {
        return presentError(translate("Orbisk", "Invalid destination."), target.error());
    }

    CancellationToken token;
    OperationProgressTracker tracker;
    TransferEngine engine(kind, sources, folder, token, tracker);
    engine.targetNames = std::move(targetNames);
    engine.conflictPolicy = policy;
    engine.mergeFolders = mergeFolders;
    // Without a terminal to ask on, a clash is answered the safe way: cancel.
    if (::isatty(STDIN_FILENO))
        engine.conflictHandler = askOnTerminal;

    OperationReport report;
    {
        const CancelOnInterrupt interrupt(token);
        const ProgressLine line(tracker, &terminalLock);
        report = engine.run();
    }

    const bool copying = kind == TransferEngine::Kind::copy;
    for (const auto& item : report.completed)
        std::cout << item.destination.native() << "\n";
    const std::string undoName =
        sources.size() == 1
            ? (copying ? L(translate("Orbisk", "Copy “%@”"), sources.front().filename().native())
                       : L(translate("Orbisk", "Move “%@”"), sources.front().filename().native()))
            : (copying ? L(translate("Orbisk", "Copy %lld items"), static_cast<long long>(sources.size()))
                       : L(translate("Orbisk", "Move %lld items"), static_cast<long long>(sources.size())));
    const bool remembered = remember(parsed->recordFile, {undoName, report.undoChanges});
    (void)presentReport(report, copying ? translate("Orbisk", "Copy") : translate("Orbisk", "Move"));
    if (report.cancelled && report.failures.empty() && !report.abortReason)
        std::cerr << translate("Orbisk", "The operation was cancelled.") << "\n";
    return report.isCompleteSuccess() && remembered ? exitSuccess : exitFailure;
}

int runCopy(std::span<const std::string> arguments)
{
    return runTransfer(copyCommand, TransferEngine::Kind::copy, arguments);
}

int runMove(std::span<const std::string> arguments)
{
    return runTransfer(moveCommand, TransferEngine::Kind::move, arguments);
}

} // namespace
} // namespace orbisk::cli
