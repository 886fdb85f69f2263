// The sub-commands of orbisk-cli: each lives in its own file and registers itself here.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk::cli {

/// Exit statuses shared by every command.
inline constexpr int exitSuccess = 0;
inline constexpr int exitFailure = 1; ///< the operation ran and reported a problem
inline constexpr int exitUsage = 2;   ///< the command line was wrong

struct Command {
    std::string_view name;
    std::string_view usage;                             ///< one or more lines, without the program name
    int (*run)(std::span<const std::string> arguments); ///< arguments after the command name
};

/// Adds a command; call it from a namespace-scope initialiser in the command's file.
bool registerCommand(Command command);
const std::vector<Command>& commands();

/// Prints "usage: orbisk-cli <usage>" for one command to stderr and returns exitUsage.
int usageError(const Command& command, std::string_view problem = {});

} // namespace orbisk::cli
