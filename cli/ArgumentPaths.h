// Paths on orbisk-cli's command line: exact names, read as the kernel reads them.
#pragma once

#include <expected>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace orbisk::cli {

/// An item given on the command line (Paths::itemPath): made absolute against the current folder,
/// and otherwise the name as given. Unlike a path typed into the app, "~" is not expanded (the shell
/// did that already: a literal "~" is a name) and no blank is trimmed; ".." is the kernel's.
[[nodiscard]] std::filesystem::path argumentPath(const std::string& argument);

/// A folder given on the command line to put things in (Paths::folderPath): like argumentPath, but a
/// last "." or ".." is the folder it names ("extract a.zip ." extracts into the current folder).
[[nodiscard]] std::filesystem::path folderArgument(const std::string& argument);

/// The items named by arguments, or, when one of them ends in "." or "..", the problem for the
/// usage message: such a path names a folder by its place, and it is refused before anything is
/// touched, as rm refuses it.
[[nodiscard]] std::expected<std::vector<std::filesystem::path>, std::string>
itemArguments(std::span<const std::string> arguments);

} // namespace orbisk::cli
