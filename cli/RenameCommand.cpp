// orbisk-cli rename ITEM NEWNAME: gives one item a new name in its folder, never replacing anything.
#include <iostream>

#include "ArgumentPaths.h"
#include "Command.h"
#include "Problems.h"
#include "RecordFile.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "support/L10n.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"rename", "rename [--record FILE] ITEM NEWNAME", &run};
const bool registered = registerCommand(command);

int run(std::span<const std::string> arguments)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(command, parsed.error());
    if (parsed->positional.size() != 2)
        return usageError(command, "needs an item and a new name");
    const auto items = itemArguments(std::span(parsed->positional).first(1));
    if (!items)
        return usageError(command, items.error());
    if (!loadHistory(parsed->recordFile))
        return exitFailure;

    const auto& item = items->front();
    const auto& newName = parsed->positional[1];
    auto renamed = ItemActions::rename(item, newName);
    if (!renamed) {
        OperationReport report;
        report.failures.push_back(ItemFailure{item, renamed.error()});
        return presentReport(report, translate("Orbisk", "Rename"));
    }
    std::cout << renamed->native() << "\n";
    if (*renamed == item)
        return exitSuccess;
    const UndoRecord record{L(translate("Orbisk", "Rename “%@”"), item.filename().native()),
                            {UndoChange::moved(item, *renamed, ItemStamp::of(*renamed))}};
    return remember(parsed->recordFile, record) ? exitSuccess : exitFailure;
}

} // namespace
} // namespace orbisk::cli
