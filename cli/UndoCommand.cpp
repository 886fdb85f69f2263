// orbisk-cli undo --record FILE: reverts the newest record of the history, as Edit › Undo does.
#include "Command.h"
#include "HistoryStep.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"undo", "undo --record FILE", &run};
const bool registered = registerCommand(command);

int run(std::span<const std::string> arguments)
{
    return revertNewest(command, arguments, true);
}

} // namespace
} // namespace orbisk::cli
