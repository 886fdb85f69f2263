#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

/// Runs orbisk-cli in the tree's "work" folder with the tree's own home and Trash.
class ArgumentPaths : public testing::Test {
protected:
    ArgumentPaths() { tree.folder("work"); }

    test::ProcessResult cli(std::vector<std::string> arguments)
    {
        return test::cliInTree(tree.root(), std::move(arguments));
    }

    /// Every entry under the tree but the Trash (links not followed) with its contents, "/" marking
    /// folders and "->" links; the history and its lock are left out.
    std::map<std::string, std::string> disk() const
    {
        std::map<std::string, std::string> entries;
        for (auto it = fs::recursive_directory_iterator(tree.root()); it != fs::recursive_directory_iterator(); ++it) {
            const auto relative = fs::relative(it->path(), tree.root()).native();
            if (relative == "data") {
                it.disable_recursion_pending();
                continue;
            }
            if (relative.ends_with("history.json") || relative.ends_with(".history.json.lock"))
                continue;
            if (it->is_symlink())
                entries[relative] = "-> " + fs::read_symlink(it->path()).native();
            else if (it->is_directory())
                entries[relative + "/"] = "";
            else
                entries[relative] = tree.read(relative);
        }
        return entries;
    }

    std::string work(std::string_view relative) const { return (tree / "work" / relative).native(); }

    TempTree tree;
};

TEST_F(ArgumentPaths, ArgumentsAreNamesAsGivenWithoutTildeOrTrimming)
{
    tree.file("home/private.txt", "private");
    tree.file("work/~", "a file named tilde");
    tree.file("work/a.txt", "a");
    tree.file("work/b.txt", "b");
    tree.file("work/c.txt", "c");
    tree.folder("work/dest ");
    tree.folder("work/dest");
    tree.folder("work/out");

    auto result = cli({"copy", "~", "out"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, work("out/~") + "\n");
    EXPECT_EQ(tree.read("work/out/~"), "a file named tilde");
    EXPECT_FALSE(tree.exists("work/out/private.txt")) << "the home folder is not a source";

    result = cli({"copy", "a.txt", " a.txt"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, work(" a.txt") + "\n");
    EXPECT_EQ(tree.read("work/ a.txt"), "a");

    // A folder named "dest " is the destination, not its neighbour "dest" nor a new file "dest".
    result = cli({"move", "--record", "history.json", "a.txt", "dest "});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, work("dest /a.txt") + "\n");
    EXPECT_EQ(tree.read("work/dest /a.txt"), "a");
    EXPECT_TRUE(fs::is_empty(tree / "work/dest"));
    EXPECT_FALSE(tree.exists("work/a.txt"));

    result = cli({"move", "--record", "history.json", "b.txt", "b.txt "});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(tree.read("work/b.txt "), "b");

    // The record keeps the exact names: undo puts each file back where it was.
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(cli({"undo", "--record", "history.json"}).exitCode, 0);
    EXPECT_EQ(tree.read("work/a.txt"), "a");
    EXPECT_EQ(tree.read("work/b.txt"), "b");
    EXPECT_TRUE(fs::is_empty(tree / "work/dest "));

    // The destination "~" is the file of that name too, so a copy onto it is a clash.
    result = cli({"copy", "c.txt", "~"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(tree.read("work/~"), "a file named tilde");
    EXPECT_FALSE(tree.exists("home/c.txt"));

    result = cli({"trash", "~"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(tree.exists("work/~"));
    EXPECT_EQ(tree.read("data/Trash/files/~"), "a file named tilde");
    EXPECT_EQ(tree.read("home/private.txt"), "private");
}

TEST_F(ArgumentPaths, DotDotAfterALinkIsTheLinkTargetsParent)
{
    // s/lnk leads to s/real/sub, so s/lnk/.. is s/real; s holds decoys of the same names.
    tree.folder("work/s/real/sub");
    tree.link("work/s/lnk", "real/sub");
    for (const std::string name : {"t", "m", "c", "r"}) {
        tree.file("work/s/real/" + name, "real " + name);
        tree.file("work/s/" + name, "decoy " + name);
    }
    tree.file("work/new.txt", "new");
    tree.folder("work/dest");
    const auto start = disk();

    struct Step {
        std::vector<std::string> command;
        std::string printed;
        std::vector<std::pair<std::string, std::string>> files; // expected afterwards, with contents
        std::vector<std::string> gone;
    };
    const Step steps[] = {
        {{"trash", "s/lnk/../t"},
         work("s/real/t") + "\t" + (tree / "data/Trash/files/t").native() + "\n",
         {{"data/Trash/files/t", "real t"}, {"work/s/t", "decoy t"}},
         {"work/s/real/t"}},
        {{"move", "s/lnk/../m", "dest"}, work("dest/m") + "\n", {{"work/dest/m", "real m"}}, {"work/s/real/m"}},
        {{"copy", "s/lnk/../c", "dest"}, work("dest/c") + "\n", {{"work/dest/c", "real c"}}, {}},
        {{"rename", "s/lnk/../r", "r2"}, work("s/real/r2") + "\n", {{"work/s/real/r2", "real r"}}, {"work/s/r2"}},
        {{"copy", "new.txt", "s/lnk/.."}, work("s/real/new.txt") + "\n", {{"work/s/real/new.txt", "new"}}, {}},
        {{"copy", "new.txt", "s/lnk/../new2.txt"},
         work("s/real/new2.txt") + "\n",
         {{"work/s/real/new2.txt", "new"}},
         {}},
    };
    std::vector<std::map<std::string, std::string>> states = {start};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.command[0] + " " + step.command[1]);
        auto command = step.command;
        command.insert(command.begin() + 1, {"--record", "history.json"});
        const auto result = cli(command);
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, step.printed);
        for (const auto& [file, contents] : step.files)
            EXPECT_EQ(tree.read(file), contents) << file;
        for (const auto& file : step.gone)
            EXPECT_FALSE(tree.exists(file)) << file;
        states.push_back(disk());
    }
    EXPECT_NE(tree.read("data/Trash/info/t.trashinfo").find("Path=" + work("s/real/t") + "\n"), std::string::npos);

    // The history holds the places the kernel meant, so undo puts everything back there.
    const auto history = tree.read("work/history.json");
    EXPECT_EQ(history.find("/.."), std::string::npos) << history;
    for (auto i = std::size(steps); i-- > 0;) {
        SCOPED_TRACE("undo " + steps[i].command[0] + " " + steps[i].command[1]);
        const auto result = cli({"undo", "--record", "history.json"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(disk(), states[i]);
    }
}

TEST_F(ArgumentPaths, DotAndDotDotAreRefusedBeforeAnythingIsTouched)
{
    tree.folder("work/a/b");
    tree.file("work/a/f", "f");
    tree.file("work/g", "g");
    tree.folder("work/dest");
    const auto start = disk();
    const std::vector<std::vector<std::string>> commands = {
        {"trash", "."},        {"trash", ".."},          {"trash", "a/.."},          {"trash", "a/."},
        {"trash", "a/./"},     {"trash", "g", "a/b/.."}, {"move", "a/b/..", "dest"}, {"move", "g", "..", "dest"},
        {"copy", ".", "dest"}, {"rename", "a/..", "x"},  {"rename", "a/b/.", "x"},
    };
    for (const auto& command : commands) {
        SCOPED_TRACE(command[0] + " " + command[1]);
        const auto result = cli(command);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("ends in “.” or “..”"), std::string::npos) << result.err;
        EXPECT_TRUE(result.out.empty()) << result.out;
        EXPECT_EQ(disk(), start);
    }
    EXPECT_FALSE(tree.exists("data/Trash/files")) << "nothing was trashed";
}

} // namespace
} // namespace orbisk
