// orbisk-cli new-folder FOLDER NAME: creates an empty folder, never replacing anything.
#include <iostream>

#include "Command.h"
#include "Problems.h"
#include "RecordFile.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "support/L10n.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"new-folder", "new-folder [--record FILE] FOLDER NAME", &run};
const bool registered = registerCommand(command);

int run(std::span<const std::string> arguments)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(command, parsed.error());
    if (parsed->positional.size() != 2)
        return usageError(command, "needs a folder and a name");
    auto history = loadHistory(parsed->recordFile);
    if (!history)
        return exitFailure;

    const auto folder = argumentPath(parsed->positional[0]);
    const auto& name = parsed->positional[1];
    auto created = ItemActions::createDirectory(name, folder);
    if (!created)
        return presentError(translate("Orbisk", "The folder couldn’t be created."), created.error());
    std::cout << created->native() << "\n";
    const UndoRecord record{L(translate("Orbisk", "New Folder “%@”"), name),
                            {UndoChange::created(*created, ItemStamp::of(*created))}};
    return remember(parsed->recordFile, std::move(*history), record) ? exitSuccess : exitFailure;
}

} // namespace
} // namespace orbisk::cli
