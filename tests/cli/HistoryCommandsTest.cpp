#include <gtest/gtest.h>

#include <fstream>

#include <nlohmann/json.hpp>

#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

/// Runs orbisk-cli in the tree's "work" folder with the tree's own home and Trash.
class HistoryCommands : public testing::Test {
protected:
    HistoryCommands() { tree.folder("work"); }

    test::ProcessResult cli(std::vector<std::string> arguments)
    {
        return test::cliInTree(tree.root(), std::move(arguments));
    }

    /// The work folder's entries (recursively) with file contents, "/" marking folders.
    std::map<std::string, std::string> disk() const
    {
        std::map<std::string, std::string> entries;
        for (auto it = fs::recursive_directory_iterator(tree / "work"); it != fs::recursive_directory_iterator();
             ++it) {
            const auto relative = fs::relative(it->path(), tree / "work").native();
            if (relative == "history.json" || relative == ".history.json.lock")
                continue;
            entries[it->is_directory() ? relative + "/" : relative] =
                it->is_directory() ? "" : tree.read("work/" + relative);
        }
        return entries;
    }

    nlohmann::json history() const { return nlohmann::json::parse(tree.read("work/history.json")); }

    TempTree tree;
};

TEST_F(HistoryCommands, EveryChangeUndoesAndRedoesThroughTheHistoryFile)
{
    tree.file("work/caf\xE9.txt", "bytes");
    tree.file("work/old.txt", "old");
    const auto start = disk();

    struct Step {
        std::vector<std::string> command;
        std::string printed;
    };
    const auto work = (tree / "work").native();
    const Step steps[] = {
        {{"rename", "--record", "history.json", "caf\xE9.txt", "\xFF renamed.txt"}, work + "/\xFF renamed.txt\n"},
        {{"new-folder", "--record=history.json", ".", "New \xFE Folder"}, work + "/New \xFE Folder\n"},
        {{"new-file", "--record", "history.json", "New \xFE Folder", "empty.txt"},
         work + "/New \xFE Folder/empty.txt\n"},
        {{"trash", "--record", "history.json", "old.txt", "New \xFE Folder"},
         work + "/old.txt\t" + (tree / "data/Trash/files/old.txt").native() + "\n" + work + "/New \xFE Folder\t" +
             (tree / "data/Trash/files/New \xFE Folder").native() + "\n"},
    };
    std::vector<std::map<std::string, std::string>> states = {start};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.command[0]);
        const auto result = cli(step.command);
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, step.printed);
        states.push_back(disk());
    }
    ASSERT_EQ(history()["undo"].size(), 4u);

    // Undo everything, the last first; then redo it all; then undo it all again.
    for (auto i = std::size(steps); i-- > 0;) {
        SCOPED_TRACE("undo " + steps[i].command[0]);
        const auto result = cli({"undo", "--record", "history.json"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(disk(), states[i]);
    }
    EXPECT_EQ(cli({"undo", "--record", "history.json"}).exitCode, 1) << "nothing is left to undo";
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE("redo " + steps[i].command[0]);
        const auto result = cli({"redo", "--record", "history.json"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(disk(), states[i + 1]);
    }
    for (auto i = std::size(steps); i-- > 0;) {
        SCOPED_TRACE("undo again " + steps[i].command[0]);
        ASSERT_EQ(cli({"undo", "--record", "history.json"}).exitCode, 0);
        EXPECT_EQ(disk(), states[i]);
    }
    EXPECT_EQ(disk(), start);
    EXPECT_EQ(history()["redo"].size(), 4u);

    // A new change clears what could be redone, as in the app.
    ASSERT_EQ(cli({"new-file", "--record", "history.json", ".", "fresh"}).exitCode, 0);
    EXPECT_EQ(history()["redo"].size(), 0u);
    const auto redo = cli({"redo", "--record", "history.json"});
    EXPECT_EQ(redo.exitCode, 1);
    EXPECT_EQ(redo.err, "orbisk-cli redo: Nothing to redo.\n");

    for (const auto& entry : fs::directory_iterator(tree / "work"))
        EXPECT_EQ(entry.path().filename().native().find(".history.json.tmp-"), std::string::npos)
            << "the history is replaced through a temporary file that does not stay";
}

TEST_F(HistoryCommands, RunsRecordingAtTheSameTimeKeepEveryRecord)
{
    // Each run reads the history, makes its folder and writes the history back: without taking
    // turns, a run that read before another wrote would drop the other's record.
    constexpr int runs = 12;
    std::string script;
    for (int i = 0; i < runs; ++i)
        script += "'" + test::binary("orbisk-cli").native() + "' new-folder --record history.json . made" +
                  std::to_string(i) + " >/dev/null & ";
    script += "wait";
    const auto result = test::run({"/bin/sh", "-c", script}, tree / "work", {});
    ASSERT_EQ(result.exitCode, 0) << result.err;

    EXPECT_EQ(history()["undo"].size(), static_cast<std::size_t>(runs));
    for (int i = 0; i < runs; ++i)
        EXPECT_TRUE(tree.exists("work/made" + std::to_string(i)));
    const auto undone = cli({"undo", "--record", "history.json"});
    EXPECT_EQ(undone.exitCode, 0) << undone.err;
    EXPECT_EQ(history()["undo"].size(), static_cast<std::size_t>(runs - 1));
}

TEST_F(HistoryCommands, ProblemsPrintTheAppsAlertAndExitOne)
{
    tree.file("work/a", "A");
    tree.file("work/b", "B");
    struct Case {
        std::vector<std::string> command;
        std::string err;
    };
    const Case cases[] = {
        {{"rename", "a", "b"},
         "Rename finished with 1 problems.\nCompleted: 0. Skipped: 0. Failed: 1.\n"
         "• An item named “b” already exists.\n"},
        {{"rename", "a", "x/y"},
         "Rename finished with 1 problems.\nCompleted: 0. Skipped: 0. Failed: 1.\n"
         "• “x/y” can’t be used as a name: a name can’t contain “/”.\n"},
        {{"new-folder", ".", "a"}, "The folder couldn’t be created.\nCouldn’t create the folder “a”: File exists.\n"},
        {{"new-file", ".", "b"}, "The file couldn’t be created.\nAn item named “b” already exists.\n"},
        {{"trash", "a", "gone"},
         "Move to Trash finished with 1 problems.\nCompleted: 1. Skipped: 0. Failed: 1.\n"
         "• “gone” no longer exists. It may have been moved or deleted by another application.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command[0] + " " + c.command.back());
        const auto result = cli(c.command);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, c.err);
    }
    EXPECT_EQ(tree.read("work/b"), "B");
    EXPECT_FALSE(tree.exists("work/a")) << "the trash command went on after the missing item";
}

TEST_F(HistoryCommands, UndoLeavesAnEditedItemAndSaysWhy)
{
    ASSERT_EQ(cli({"new-file", "--record", "history.json", ".", "notes.txt"}).exitCode, 0);
    ASSERT_EQ(cli({"rename", "--record", "history.json", "notes.txt", "plans.txt"}).exitCode, 0);
    ASSERT_EQ(cli({"undo", "--record", "history.json"}).exitCode, 0);
    std::ofstream(tree / "work/notes.txt") << "typed since";

    const auto result = cli({"undo", "--record", "history.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "Undo New File “notes.txt”\n");
    EXPECT_EQ(result.err, "Undo finished with 1 problems.\nCompleted: 0. Skipped: 0. Failed: 1.\n"
                          "• “notes.txt” changed after the operation, so it was left as it is.\n");
    EXPECT_EQ(tree.read("work/notes.txt"), "typed since");
    EXPECT_EQ(history()["undo"].size(), 1u) << "the refused record stays, as in the app";
    EXPECT_EQ(history()["redo"].size(), 1u) << "only the rename can be redone";
}

TEST_F(HistoryCommands, UndoOfAMergeBringsBackTheFolderItEmptiedAndARefusedStepStays)
{
    tree.file("work/S/a.txt", "a");
    tree.file("work/S/sub/b.txt", "b");
    tree.file("work/into/S/x.txt", "x");
    tree.file("work/into/S/sub/y.txt", "y");
    const auto before = disk();
    ASSERT_EQ(cli({"move", "--merge-folders", "--record", "history.json", "S", "into"}).exitCode, 0);
    const auto merged = disk();
    EXPECT_FALSE(tree.exists("work/S"));
    EXPECT_EQ(merged.count("into/S/sub/b.txt"), 1u);

    // A file now where the emptied folder was: nothing can go back, and the step is kept.
    tree.file("work/S", "in the way");
    auto result = cli({"undo", "--record", "history.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("• Another item named “S” is now in its old place, so it was left where it is."),
              std::string::npos)
        << result.err;
    EXPECT_EQ(tree.read("work/S"), "in the way");
    EXPECT_EQ(history()["undo"].size(), 1u);
    EXPECT_EQ(history()["redo"].size(), 0u);

    fs::remove(tree / "work/S");
    result = cli({"undo", "--record", "history.json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(disk(), before);
    EXPECT_EQ(history()["undo"].size(), 0u);
    ASSERT_EQ(cli({"redo", "--record", "history.json"}).exitCode, 0);
    EXPECT_EQ(disk(), merged);
    ASSERT_EQ(cli({"undo", "--record", "history.json"}).exitCode, 0);
    EXPECT_EQ(disk(), before);
}

// Through the history file too, undo never takes along what it says it left, and its report counts
// what it did and says what it left.
TEST_F(HistoryCommands, UndoTakesBackOnlyWhatTheOperationMadeAndSaysWhatItLeft)
{
    // A long history file name still gets its lock and temporary file beside it.
    const std::string record(250, 'h');
    tree.file("work/src/album/one", "1");
    tree.folder("work/dst");
    ASSERT_EQ(cli({"copy", "--record", record, "src/album", "dst"}).exitCode, 0);
    // A copied folder goes to the Trash whole, with what was added to it since.
    tree.file("work/dst/album/mine.txt", "mine");
    const auto undone = cli({"undo", "--record", record});
    EXPECT_EQ(undone.exitCode, 0) << undone.err;
    EXPECT_FALSE(tree.exists("work/dst/album"));
    EXPECT_EQ(tree.read("data/Trash/files/album/mine.txt"), "mine");
    ASSERT_EQ(cli({"redo", "--record", record}).exitCode, 0);
    EXPECT_EQ(tree.read("work/dst/album/one"), "1");
    EXPECT_EQ(tree.read("work/dst/album/mine.txt"), "mine");

    // A new folder and two items moved into it, as one record; then one of them edited.
    tree.file("work/a", "A");
    tree.file("work/b", "B");
    ASSERT_EQ(cli({"new-folder", "--record", record, ".", "Selection"}).exitCode, 0);
    ASSERT_EQ(cli({"move", "--record", record, "a", "b", "Selection"}).exitCode, 0);
    auto history = nlohmann::json::parse(tree.read("work/" + record));
    auto& steps = history["undo"];
    ASSERT_EQ(steps.size(), 3u);
    for (const auto& change : steps[2]["changes"])
        steps[1]["changes"].push_back(change);
    steps.erase(2);
    std::ofstream(tree / "work" / record) << history.dump(2);
    std::ofstream(tree / "work/Selection/a") << "edited";

    const auto partial = cli({"undo", "--record", record});
    EXPECT_EQ(partial.exitCode, 1);
    EXPECT_EQ(partial.err, "Undo finished with 2 problems.\nCompleted: 1. Skipped: 0. Failed: 2.\n"
                           "• “a” changed after the operation, so it was left as it is.\n"
                           "• “Selection” still holds items that were left as they are, so it was left where it "
                           "is.\n");
    EXPECT_EQ(tree.read("work/Selection/a"), "edited");
    EXPECT_EQ(tree.read("work/b"), "B");
    EXPECT_FALSE(tree.exists("data/Trash/files/Selection"));
    ASSERT_EQ(cli({"redo", "--record", record}).exitCode, 0);
    EXPECT_EQ(tree.read("work/Selection/b"), "B");
    EXPECT_FALSE(tree.exists("work/b"));

    // A trashed file emptied from the Trash, and another of its name trashed later: undo refuses.
    tree.file("work/x", "first");
    ASSERT_EQ(cli({"trash", "--record", record, "x"}).exitCode, 0);
    fs::remove(tree / "data/Trash/files/x");
    fs::remove(tree / "data/Trash/info/x.trashinfo");
    tree.file("work/x", "second");
    ASSERT_EQ(cli({"trash", "x"}).exitCode, 0);
    const auto refused = cli({"undo", "--record", record});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "Undo finished with 1 problems.\nCompleted: 0. Skipped: 0. Failed: 1.\n"
                           "• “x” is no longer in the Trash (it may have been emptied).\n");
    EXPECT_FALSE(tree.exists("work/x"));
    EXPECT_EQ(tree.read("data/Trash/files/x"), "second");
    EXPECT_TRUE(tree.exists("data/Trash/info/x.trashinfo"));
    for (const auto& entry : fs::directory_iterator(tree / "work"))
        EXPECT_EQ(entry.path().filename().native().find(".tmp-"), std::string::npos);
}

TEST_F(HistoryCommands, UsageErrorsExitTwoAndABadHistoryStopsBeforeAnyChange)
{
    for (const auto& command : std::vector<std::vector<std::string>>{{"rename", "only-one"},
                                                                     {"rename", "--record"},
                                                                     {"new-folder", "--force", ".", "x"},
                                                                     {"trash"},
                                                                     {"undo"},
                                                                     {"redo", "--record", "h.json", "extra"}}) {
        SCOPED_TRACE(command[0]);
        const auto result = cli(command);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("usage: orbisk-cli " + command[0]), std::string::npos) << result.err;
    }

    tree.file("work/history.json", R"({"undo": [{"name": "x", "changes": [{"kind": "copied"}]}], "redo": []})");
    tree.file("work/keep", "k");
    const auto result = cli({"trash", "--record", "history.json", "keep"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("history.json"), std::string::npos) << result.err;
    EXPECT_EQ(tree.read("work/keep"), "k");

    // A name that looks like an option, after "--".
    tree.file("work/-rf", "dash");
    ASSERT_EQ(cli({"rename", "--", "-rf", "dash"}).exitCode, 0);
    EXPECT_EQ(tree.read("work/dash"), "dash");
    // A name that is a tilde is a name, not the home folder.
    tree.file("work/~", "tilde");
    ASSERT_EQ(cli({"trash", "~"}).exitCode, 0);
    EXPECT_FALSE(tree.exists("work/~"));
    EXPECT_TRUE(tree.exists("data/Trash/files/~"));
}

} // namespace
} // namespace orbisk
