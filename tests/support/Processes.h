// Running real programs from tests: our own binaries and the peers we check against.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orbisk::test {

struct ProcessResult {
    int exitCode = -1; ///< -1 when the program could not be started or was killed
    std::string out;
    std::string err;
};

/// Runs program with arguments (no shell), optionally in a working folder and with extra
/// environment entries "NAME=value". Waits for it to end.
ProcessResult run(const std::vector<std::string>& arguments, const std::filesystem::path& workingFolder = {},
                  const std::vector<std::string>& environment = {});

/// Runs orbisk-cli in root/work with root/home as its home and root/data as its data folder, so
/// that its Trash is the tree's own.
ProcessResult cliInTree(const std::filesystem::path& root, std::vector<std::string> arguments);

/// Whether a program can be found on PATH.
bool haveProgram(const std::string& name);

/// Path of one of our own executables in the build's bin folder.
std::filesystem::path binary(const std::string& name);

} // namespace orbisk::test
