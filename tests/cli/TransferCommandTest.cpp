#include <gtest/gtest.h>

#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

test::ProcessResult cli(const TempTree& tree, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), test::binary("orbisk-cli").native());
    // Replaced items go to a trash inside the tree, never the user's own.
    return test::run(arguments, tree.root(), {"XDG_DATA_HOME=" + (tree / "data").native()});
}

TEST(TransferCommand, DestinationsAreReadLikeTheCopyDialog)
{
    struct Row {
        std::vector<std::string> arguments;
        std::vector<std::string> expectedFiles; // relative to the tree, with their contents "a"/"b"
    };
    const std::vector<Row> table = {
        {{"copy", "a.txt", "b.md", "dst"}, {"dst/a.txt", "dst/b.md"}},
        {{"copy", "a.txt", "dst/renamed.txt"}, {"dst/renamed.txt"}},
        {{"copy", "a.txt", "b.md", "dst/*.bak"}, {"dst/a.bak", "dst/b.bak"}},
        {{"move", "a.txt", "dst/"}, {"dst/a.txt"}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.arguments[0] + " → " + row.arguments.back());
        TempTree tree;
        tree.file("a.txt", "a");
        tree.file("b.md", "b");
        tree.folder("dst");
        const auto result = cli(tree, row.arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        for (const auto& file : row.expectedFiles) {
            EXPECT_TRUE(tree.exists(file)) << file;
            EXPECT_EQ(result.out.find((tree / file).native()) != std::string::npos, true) << result.out;
        }
        EXPECT_EQ(tree.exists("a.txt"), row.arguments[0] == "copy");
    }
}

TEST(TransferCommand, AClashWithoutATerminalIsCancelledAndAPolicyAnswersIt)
{
    TempTree tree;
    tree.file("src/n\xE9.txt", "new");
    tree.file("dst/n\xE9.txt", "old");
    tree.file("src/z.txt", "z");

    auto result = cli(tree, {"copy", "src/n\xE9.txt", "src/z.txt", "dst"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("The operation was cancelled."), std::string::npos) << result.err;
    EXPECT_EQ(tree.read("dst/n\xE9.txt"), "old");
    EXPECT_FALSE(tree.exists("dst/z.txt"));

    result = cli(tree, {"copy", "--policy", "keepBoth", "src/n\xE9.txt", "dst"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(tree.read("dst/n\xE9 2.txt"), "new");

    result = cli(tree, {"move", "--policy=replace", "src/n\xE9.txt", "dst"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(tree.read("dst/n\xE9.txt"), "new");
    EXPECT_FALSE(tree.exists("src/n\xE9.txt"));
    EXPECT_EQ(tree.read("data/Trash/files/n\xE9.txt"), "old");
    EXPECT_TRUE(tree.exists("data/Trash/info/n\xE9.txt.trashinfo"));
}

TEST(TransferCommand, FailuresAndUsageErrorsHaveTheirExitStatus)
{
    TempTree tree;
    tree.folder("F/inner");
    tree.file("a.txt", "a");
    const std::vector<std::pair<std::vector<std::string>, int>> table = {
        {{"copy", "a.txt"}, 2},
        {{"copy", "--policy", "sometimes", "a.txt", "F"}, 2},
        {{"copy", "--policy", "cancel", "a.txt", "F"}, 2},
        {{"move", "--frobnicate", "a.txt", "F"}, 2},
        {{"move", "F", "F/inner"}, 1},
        {{"copy", "missing.txt", "F"}, 1},
        {{"copy", "a.txt", "a.txt", "nowhere/x"}, 1},
    };
    for (const auto& [arguments, status] : table) {
        SCOPED_TRACE(arguments[1]);
        const auto result = cli(tree, arguments);
        EXPECT_EQ(result.exitCode, status) << result.err;
        EXPECT_FALSE(result.err.empty());
    }
    EXPECT_TRUE(tree.exists("F/inner"));
    EXPECT_FALSE(tree.exists("F/inner/F"));
    EXPECT_FALSE(tree.exists("F/a.txt"));
}

TEST(TransferCommand, ATreeFourHundredFoldersDeepIsCopiedAndMovedUnderTheUsualLimit)
{
    TempTree tree;
    TempTree other("/dev/shm");
    std::string deepest = "src";
    for (int level = 0; level < 400; ++level) {
        deepest += "/d";
        tree.file(deepest + "/f", std::to_string(level));
    }
    tree.folder("dst");
    // Both limits at the usual 1,024, so that raising the soft one to the hard one gains nothing.
    const auto limited = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {"sh", "-c", "ulimit -n 1024 && exec \"$@\"", "sh", test::binary("orbisk-cli").native()});
        return test::run(arguments, tree.root(), {"XDG_DATA_HOME=" + (tree / "data").native()});
    };

    auto result = limited({"copy", "--record", "history.json", "src", "dst"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(tree.exists(deepest.replace(0, 3, "dst/src") + "/f"));
    EXPECT_NE(tree.read("history.json").find((tree / "dst/src").native()), std::string::npos);

    result = limited({"move", "--record", "history.json", "dst/src", other.root().native()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(tree.exists("dst/src"));
    EXPECT_TRUE(other.exists(deepest.substr(4) + "/f"));
    EXPECT_EQ(other.read(deepest.substr(4) + "/f"), "399");
    EXPECT_NE(tree.read("history.json").find((other / "src").native()), std::string::npos);
}

TEST(TransferCommand, ARecordFileGetsTheUndoChanges)
{
    TempTree tree;
    tree.file("a.txt", "a");
    tree.folder("dst");
    const auto result = cli(tree, {"copy", "--record", "history.json", "a.txt", "dst"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const std::string history = tree.read("history.json");
    EXPECT_NE(history.find("Copy “a.txt”"), std::string::npos) << history;
    EXPECT_NE(history.find((tree / "dst/a.txt").native()), std::string::npos) << history;
}

} // namespace
} // namespace orbisk
