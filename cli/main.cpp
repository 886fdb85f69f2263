// orbisk-cli: the core's operations for scripts and benchmarks, with the app's safety rules.
#include <algorithm>
#include <iostream>

#include "Command.h"
#include "platform/OpenFileLimit.h"

namespace orbisk::cli {

namespace {
std::vector<Command>& registry()
{
    static std::vector<Command> list;
    return list;
}
} // namespace

bool registerCommand(Command command)
{
    registry().push_back(command);
    return true;
}

const std::vector<Command>& commands()
{
    return registry();
}

int usageError(const Command& command, std::string_view problem)
{
    if (!problem.empty())
        std::cerr << "orbisk-cli " << command.name << ": " << problem << "\n";
    std::string_view usage = command.usage;
    while (!usage.empty()) {
        const auto end = usage.find('\n');
        std::cerr << "usage: orbisk-cli " << usage.substr(0, end) << "\n";
        usage = end == std::string_view::npos ? std::string_view{} : usage.substr(end + 1);
    }
    return exitUsage;
}

} // namespace orbisk::cli

int main(int argc, char** argv)
{
    using namespace orbisk::cli;
    orbisk::OpenFileLimit::raiseToHardLimit();
    auto list = commands();
    std::ranges::sort(list, {}, &Command::name);
    const auto printUsage = [&](std::ostream& out) {
        out << "usage: orbisk-cli COMMAND [ARGUMENTS]\n\ncommands:\n";
        for (const auto& c : list)
            out << "  " << c.usage.substr(0, c.usage.find('\n')) << "\n";
    };
    if (argc < 2) {
        printUsage(std::cerr);
        return exitUsage;
    }
    const std::string_view name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        printUsage(std::cout);
        return exitSuccess;
    }
    const auto it = std::ranges::find(list, name, &Command::name);
    if (it == list.end()) {
        std::cerr << "orbisk-cli: unknown command “" << name << "”\n";
        printUsage(std::cerr);
        return exitUsage;
    }
    const std::vector<std::string> arguments(argv + 2, argv + argc);
    try {
        return it->run(arguments);
    } catch (const std::exception& e) {
        std::cerr << "orbisk-cli " << name << ": internal error: " << e.what() << "\n";
        return exitFailure;
    }
}
