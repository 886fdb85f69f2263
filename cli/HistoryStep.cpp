#include "HistoryStep.h"

#include <iostream>

#include "Problems.h"
#include "RecordFile.h"
#include "operations/FileUndo.h"
#include "support/L10n.h"

namespace orbisk::cli {

int revertNewest(const Command& command, std::span<const std::string> arguments, bool isUndo)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(command, parsed.error());
    if (!parsed->recordFile)
        return usageError(command, "needs --record FILE");
    if (!parsed->positional.empty())
        return usageError(command, "takes no other arguments");
    // Held until the history is written again, so that a run recording meanwhile waits.
    auto lock = HistoryLock::acquire(*parsed->recordFile);
    if (!lock) {
        std::cerr << "orbisk-cli: " << lock.error() << "\n";
        return exitFailure;
    }
    auto history = loadHistory(parsed->recordFile);
    if (!history)
        return exitFailure;

    auto& from = isUndo ? history->undo : history->redo;
    auto& to = isUndo ? history->redo : history->undo;
    if (from.empty()) {
        std::cerr << "orbisk-cli " << command.name << ": "
                  << (isUndo ? translate("Orbisk", "Nothing to undo.") : translate("Orbisk", "Nothing to redo."))
                  << "\n";
        return exitFailure;
    }
    const auto record = std::move(from.back());
    from.pop_back();
    std::cout << (isUndo ? L(translate("Orbisk", "Undo %@"), record.name)
                         : L(translate("Orbisk", "Redo %@"), record.name))
              << "\n";

    auto outcome = FileUndo::revert(record, FileUndo::systemTrash());
    auto remaining = std::move(outcome.remaining);
    auto report = FileUndo::reportOf(std::move(outcome));
    if (!report.undoChanges.empty())
        to.push_back(UndoRecord{record.name, report.undoChanges});
    // What could not be reversed stays on its stack, to be tried again once the problem is solved.
    if (!remaining.isEmpty())
        from.push_back(std::move(remaining));
    // The history is written before the problems are shown, so that what was reverted can be
    // redone even when some of it was refused.
    if (auto saved = history->save(*parsed->recordFile); !saved) {
        std::cerr << "orbisk-cli: " << saved.error() << "\n";
        return exitFailure;
    }
    return presentReport(report, isUndo ? translate("Orbisk", "Undo") : translate("Orbisk", "Redo"));
}

} // namespace orbisk::cli
