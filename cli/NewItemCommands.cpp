// orbisk-cli new-folder|new-file FOLDER NAME: creates an empty folder or file, never replacing anything.
#include <iostream>

#include "Command.h"
#include "Problems.h"
#include "RecordFile.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "support/L10n.h"
#include "support/Paths.h"

namespace orbisk::cli {
namespace {

int runNewFolder(std::span<const std::string> arguments);
int runNewFile(std::span<const std::string> arguments);

const Command newFolder{"new-folder", "new-folder [--record FILE] FOLDER NAME", &runNewFolder};
const Command newFile{"new-file", "new-file [--record FILE] FOLDER NAME", &runNewFile};
const bool registered = registerCommand(newFolder) && registerCommand(newFile);

int runNewItem(const Command& command, std::span<const std::string> arguments, bool isFolder)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(command, parsed.error());
    if (parsed->positional.size() != 2)
        return usageError(command, "needs a folder and a name");
    if (!loadHistory(parsed->recordFile))
        return exitFailure;

    const auto folder = Paths::folderPath(parsed->positional[0]);
    const auto& name = parsed->positional[1];
    auto created = isFolder ? ItemActions::createDirectory(name, folder) : ItemActions::createEmptyFile(name, folder);
    if (!created)
        return presentError(isFolder ? translate("Orbisk", "The folder couldn’t be created.")
                                     : translate("Orbisk", "The file couldn’t be created."),
                            created.error());
    std::cout << created->native() << "\n";
    const UndoRecord record{isFolder ? L(translate("Orbisk", "New Folder “%@”"), name)
                                     : L(translate("Orbisk", "New File “%@”"), name),
                            {UndoChange::created(*created, ItemStamp::of(*created))}};
    return remember(parsed->recordFile, record) ? exitSuccess : exitFailure;
}

int runNewFolder(std::span<const std::string> arguments)
{
    return runNewItem(newFolder, arguments, true);
}
int runNewFile(std::span<const std::string> arguments)
{
    return runNewItem(newFile, arguments, false);
}

} // namespace
} // namespace orbisk::cli
