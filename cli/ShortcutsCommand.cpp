// orbisk-cli shortcuts: prints the keyboard shortcut list as Markdown (the source of docs/SHORTCUTS.md).
#include <iostream>

#include "Command.h"
#include "shortcuts/ShortcutCatalog.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"shortcuts", "shortcuts", run};

int run(std::span<const std::string> arguments)
{
    if (!arguments.empty())
        return usageError(command, "takes no arguments");
    std::cout << ShortcutCatalog::markdown() << std::flush;
    return std::cout ? exitSuccess : exitFailure;
}

const bool registered = registerCommand(command);

} // namespace
} // namespace orbisk::cli
