#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "support/Processes.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

test::ProcessResult cli(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), test::binary("orbisk-cli").native());
    return test::run(arguments);
}

std::vector<std::string> lines(const std::string& text, char end = '\n')
{
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line, end);)
        out.push_back(line);
    return out;
}

void populate(TempTree& tree)
{
    tree.file("big/data", std::string(70'000, 'd'));
    tree.file("big/nested/more", std::string(5'000, 'm'));
    tree.file("small/note.txt", "a note\nwith a Needle in line two\n");
    tree.file("small/.hidden-needle.txt", "needle\n");
    tree.file("caf\xE9 menu.txt", "needle\n");
    tree.file("top.bin", std::string(2'000, 't'));
    fs::create_hard_link(tree / "big/data", tree / "small/same-data");
    tree.link("to-big", "big");
}

TEST(SizeCommand, CountsLikeFindAndBreaksDownLargestFirst)
{
    TempTree tree;
    populate(tree);
    // The oracle: regular files once per inode, as find lists them without following links.
    const auto found = test::run({"find", tree.root().native(), "-type", "f", "-printf", "%i %s\n"});
    std::set<std::string> inodes;
    std::int64_t bytes = 0;
    for (const auto& line : lines(found.out)) {
        std::istringstream in(line);
        std::string inode;
        std::int64_t size = 0;
        in >> inode >> size;
        if (inodes.insert(inode).second)
            bytes += size;
    }
    const auto result = cli({"size", "--bytes", tree.root().native()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, std::to_string(bytes) + "  6 files  3 folders  " + tree.root().native() + "\n");

    const auto breakdown = cli({"size", "--bytes", "--breakdown", tree.root().native()});
    ASSERT_EQ(breakdown.exitCode, 0) << breakdown.err;
    const auto rows = lines(breakdown.out);
    ASSERT_EQ(rows.size(), 6u) << breakdown.out;
    EXPECT_EQ(rows[1], "   97.3%  75000  big/");
    EXPECT_EQ(rows[2], "    2.6%  2000  top.bin");
    EXPECT_EQ(rows[3], "    0.1%  40  small/"); // its hard link to big/data counts once, with the first child by name
    EXPECT_EQ(rows[4], "    0.0%  7  caf\\xE9 menu.txt");
    EXPECT_EQ(rows[5], "    0.0%  0  to-big  (link, not followed)");

    const auto human = cli({"size", tree.root().native(), (tree / "big").native()});
    EXPECT_EQ(lines(human.out), (std::vector<std::string>{"77.0 kB  6 files  3 folders  " + tree.root().native(),
                                                          "75.0 kB  2 files  1 folder  " + (tree / "big").native()}));
}

TEST(SizeCommand, ReportsUnreadableItemsAndBadArguments)
{
    TempTree tree;
    tree.file("open/a", "1234");
    tree.file("locked/b", "5678");
    ASSERT_EQ(::chmod((tree / "locked").c_str(), 0), 0);
    ASSERT_EQ(::chmod(tree.root().c_str(), 0755), 0);
    const auto outcome = test::runUnprivileged([&] {
        const auto result = cli({"size", "--bytes", tree.root().native()});
        return std::to_string(result.exitCode) + " " + result.out;
    });
    ::chmod((tree / "locked").c_str(), 0755);
    if (outcome) {
        EXPECT_EQ(*outcome, "1 4  1 file  2 folders  1 unreadable  " + tree.root().native() + "\n");
    }

    EXPECT_EQ(cli({"size"}).exitCode, 2);
    EXPECT_EQ(cli({"size", "--frobnicate", "."}).exitCode, 2);
    const auto missing = cli({"size", "--breakdown", (tree / "missing").native()});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("cannot read"), std::string::npos);
}

TEST(FindCommand, PrintsPathsByteExactWithTheirOptions)
{
    TempTree tree;
    populate(tree);
    const auto root = tree.root().native();
    // "ROOT" stands for the folder searched.
    const struct {
        std::vector<std::string> arguments;
        std::vector<std::string> expected; ///< relative to the root
    } table[] = {
        {{"ROOT", "needle"}, {}}, // no name holds it
        {{"ROOT", "*.TXT"}, {"caf\xE9 menu.txt", "small/note.txt"}},
        {{"--hidden", "ROOT", "*.txt"}, {"caf\xE9 menu.txt", "small/.hidden-needle.txt", "small/note.txt"}},
        {{"ROOT", "CAF"}, {"caf\xE9 menu.txt"}},
        {{"--containing", "needle", "ROOT"},
         {"caf\xE9 menu.txt:1:needle", "small/note.txt:2:with a Needle in line two"}},
        {{"--containing", "Needle", "--case-sensitive", "ROOT"}, {"small/note.txt:2:with a Needle in line two"}},
        {{"--containing", "^ne+dle$", "--regex", "--hidden", "ROOT", "*.txt"},
         {"caf\xE9 menu.txt:1:needle", "small/.hidden-needle.txt:1:needle"}},
        {{"ROOT", "big"}, {"big", "to-big"}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(::testing::PrintToString(row.arguments));
        std::vector<std::string> arguments{"find"};
        for (const auto& argument : row.arguments)
            arguments.push_back(argument == "ROOT" ? root : argument);
        const auto result = cli(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        auto found = lines(result.out);
        for (auto& line : found)
            line = line.substr(root.size() + 1);
        std::ranges::sort(found);
        auto expected = row.expected;
        std::ranges::sort(expected);
        EXPECT_EQ(found, expected);
    }

    const auto nul = cli({"find", "-0", root, "caf"});
    EXPECT_EQ(nul.out, root + "/caf\xE9 menu.txt" + std::string(1, '\0'));

    const auto limited = cli({"find", "--limit", "2", root});
    EXPECT_EQ(limited.exitCode, 0);
    EXPECT_EQ(lines(limited.out).size(), 2u);
    EXPECT_NE(limited.err.find("result limit reached"), std::string::npos);

    EXPECT_EQ(cli({"find", "--containing", "(", "--regex", root}).exitCode, 2);
    EXPECT_EQ(cli({"find", "--regex", root}).exitCode, 2);
    EXPECT_EQ(cli({"find", "--limit", "0", root}).exitCode, 2);
    EXPECT_EQ(cli({"find"}).exitCode, 2);
}

/// Starts orbisk-cli with arguments, interrupts it after a moment and returns its exit status and
/// stderr; nullopt when it had already finished.
std::optional<std::pair<int, std::string>> interrupted(const std::vector<std::string>& arguments)
{
    int errors[2];
    if (::pipe(errors) != 0)
        return std::nullopt;
    const std::string program = test::binary("orbisk-cli").native();
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(errors[1], STDERR_FILENO);
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(devNull, STDOUT_FILENO);
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const auto& a : arguments)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    ::close(errors[1]);
    // Interrupt only once the program catches SIGINT (its handler shows in SigCgt), else the
    // signal would end it before it could cancel anything.
    const auto catchesInterrupt = [pid] {
        std::ifstream status("/proc/" + std::to_string(pid) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("SigCgt:"))
                return (std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1) & 1) != 0;
        }
        return false;
    };
    while (!catchesInterrupt() && ::waitpid(pid, nullptr, WNOHANG) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const bool stillRunning = ::waitpid(pid, nullptr, WNOHANG) == 0;
    if (stillRunning)
        ::kill(pid, SIGINT);
    std::string err;
    char buffer[4096];
    for (ssize_t n; (n = ::read(errors[0], buffer, sizeof buffer)) > 0;)
        err.append(buffer, static_cast<std::size_t>(n));
    ::close(errors[0]);
    int status = 0;
    if (stillRunning)
        ::waitpid(pid, &status, 0);
    if (!stillRunning)
        return std::nullopt;
    return std::pair{WIFEXITED(status) ? WEXITSTATUS(status) : -1, err};
}

TEST(SizeCommand, CtrlCStopsTheWalkAndSaysWhatWasCounted)
{
    // A tree large enough to take longer than a moment: the whole file system.
    const auto size = interrupted({"size", "/"});
    if (!size)
        GTEST_SKIP() << "the walk ended before it could be interrupted";
    EXPECT_EQ(size->first, 130);
    EXPECT_NE(size->second.find("cancelled"), std::string::npos) << size->second;

    const auto find = interrupted({"find", "/", "no name is like this one, surely"});
    if (!find)
        GTEST_SKIP() << "the search ended before it could be interrupted";
    EXPECT_EQ(find->first, 130);
    EXPECT_NE(find->second.find("cancelled"), std::string::npos) << find->second;
}

} // namespace
} // namespace orbisk
