// orbisk-cli redo --record FILE: puts back what the last undo reverted, as Edit › Redo does.
#include "Command.h"
#include "HistoryStep.h"

namespace orbisk::cli {
namespace {

int run(std::span<const std::string> arguments);

const Command command{"redo", "redo --record FILE", &run};
const bool registered = registerCommand(command);

int run(std::span<const std::string> arguments)
{
    return revertNewest(command, arguments, false);
}

} // namespace
} // namespace orbisk::cli
