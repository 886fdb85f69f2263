// orbisk-cli trash ITEM…: moves items to the Trash and prints where each one went.
#include <iostream>

#include "ArgumentPaths.h"
#include "Command.h"
#include "Problems.h"
#include "RecordFile.h"
#include "operations/TrashOperation.h"
#include "support/L10n.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"trash", "trash [--record FILE] ITEM…", &run};
const bool registered = registerCommand(command);

int run(std::span<const std::string> arguments)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(command, parsed.error());
    if (parsed->positional.empty())
        return usageError(command, "needs at least one item");
    const auto items = itemArguments(parsed->positional);
    if (!items)
        return usageError(command, items.error());
    if (!loadHistory(parsed->recordFile))
        return exitFailure;

    CancellationToken token;
    OperationProgressTracker progress;
    const auto report = TrashOperation::run(*items, token, progress);
    // One line per item: where it was, a tab, where it is now (bytes as they are).
    for (const auto& moved : report.completed)
        std::cout << moved.source.native() << "\t" << moved.destination.native() << "\n";

    const auto name = items->size() == 1
                          ? L(translate("Orbisk", "Move “%@” to the Trash"), items->front().filename().native())
                          : L(translate("Orbisk", "Move %lld items to the Trash"), items->size());
    const bool remembered = remember(parsed->recordFile, {name, report.undoChanges});
    const int status = presentReport(report, translate("Orbisk", "Move to Trash"));
    return remembered ? status : exitFailure;
}

} // namespace
} // namespace orbisk::cli
