// Undo and redo for orbisk-cli: one step back or forward through the history file.
#pragma once

#include <span>
#include <string>

#include "Command.h"

namespace orbisk::cli {

/// Takes the newest record off the undo stack (isUndo) or the redo stack, reverts it, and puts its
/// inverse on the other stack, so that undo and redo alternate like the app's menu items; what it
/// could not reverse stays on its own stack. Prints
/// the problems as the app's alert would and returns the exit status.
int revertNewest(const Command& command, std::span<const std::string> arguments, bool isUndo);

} // namespace orbisk::cli
