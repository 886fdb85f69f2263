// What a move or a replacement reports and records for undo, checked against the disk afterwards
// and again after undo: failed copies, cancellations, merges and sources that other programs touch.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "TransferTestSupport.h"
#include "UndoTestSupport.h"
#include "operations/FileUndo.h"
#include "operations/TransferEngine.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;
using test::transfer;
using Kind = TransferEngine::Kind;
using Picture = std::map<std::string, std::string>;

std::vector<std::string> messages(const std::vector<ItemFailure>& failures)
{
    std::vector<std::string> texts;
    for (const auto& failure : failures)
        texts.push_back(failure.message());
    return texts;
}

/// A Trash for the test: items go by rename into a hidden folder of whichever test tree holds
/// them, so that nothing is left in a real Trash on /dev/shm.
FileUndo::TrashService trashWithin(std::vector<fs::path> roots)
{
    static std::atomic<int> counter = 0;
    return [roots = std::move(roots)](const fs::path& item) -> std::expected<fs::path, AnyError> {
        for (const auto& root : roots) {
            if (!item.native().starts_with(root.native() + "/"))
                continue;
            fs::create_directories(root / ".trash");
            const fs::path where = root / ".trash" / (std::to_string(++counter) + "-" + item.filename().native());
            if (::rename(item.c_str(), where.c_str()) != 0)
                return std::unexpected(AnyError(FileOperationError::system(errno, "move", item)));
            return where;
        }
        return std::unexpected(AnyError(FileOperationError::system(EXDEV, "move", item)));
    };
}

/// Every entry under folder by relative path, as test::picture gives it, except that a FIFO
/// reads "fifo" instead of being opened, and the test Trash is left out.
Picture contents(const fs::path& folder)
{
    Picture entries;
    if (!fs::exists(fs::symlink_status(folder)))
        return entries;
    for (auto it = fs::recursive_directory_iterator(folder); it != fs::recursive_directory_iterator(); ++it) {
        const auto relative = it->path().lexically_relative(folder).native();
        if (relative.starts_with(".trash")) {
            it.disable_recursion_pending();
            continue;
        }
        if (it->is_fifo())
            entries[relative] = "fifo";
        else if (it->is_directory() && !it->is_symlink())
            entries[relative + "/"] = "";
        else if (it->is_symlink())
            entries[relative] = "-> " + fs::read_symlink(it->path()).native();
        else {
            std::ifstream in(it->path(), std::ios::binary);
            entries[relative] = {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        }
    }
    return entries;
}

class MoveOutcome : public testing::Test {
protected:
    void SetUp() override
    {
        if (test::onSameVolume(tree.root(), other.root()))
            GTEST_SKIP() << "/dev/shm is on the same volume as the temporary folder";
    }

    UndoOutcome undo(const OperationReport& report)
    {
        return FileUndo::revert({"Move", report.undoChanges}, trashWithin({tree.root(), other.root()}));
    }

    TempTree tree;
    TempTree other{"/dev/shm"};
};

// A folder whose copy could not be made stays at the source, even when it is empty: the
// destination here is deep enough that the deepest folder's path is too long there.
TEST_F(MoveOutcome, AMoveAcrossVolumesRemovesOnlyFoldersThatWereCopied)
{
    const std::string level(200, 'L');
    const fs::path source = tree / "S";
    std::string chain;
    while ((source / chain).native().size() + 2 * (level.size() + 1) < 4000)
        chain += (chain.empty() ? "" : "/") + level;
    tree.file("S/a.txt", "a");
    tree.file("S/" + chain + "/f.txt", "f");
    tree.folder("S/" + chain + "/" + level);
    // The copy of S/<chain> and its file fit within the path limit; the empty folder below does not.
    const std::size_t room = 4095 - 16 - (fs::path("S") / chain).native().size() - 1;
    fs::path destination = other.root();
    while (destination.native().size() + 1 + level.size() + 1 < room)
        destination /= level;
    destination /= std::string(room - destination.native().size() - 1, 'd');
    fs::create_directories(destination);
    const Picture before = contents(tree.root());

    const auto report = transfer(Kind::move, {source}, destination);

    EXPECT_TRUE(tree.exists("S/" + chain + "/" + level)) << "the folder that was not copied is gone";
    EXPECT_FALSE(tree.exists("S/a.txt"));
    EXPECT_FALSE(tree.exists("S/" + chain + "/f.txt"));
    EXPECT_EQ(contents(destination / "S").count("a.txt"), 1U);
    EXPECT_EQ(messages(report.failures),
              std::vector<std::string>{"Couldn’t create the folder “" + level + "”: File name too long."});
    ASSERT_EQ(report.undoChanges.size(), 1U);
    EXPECT_EQ(report.undoChanges[0], UndoChange::moved(source, destination / "S", ItemStamp::of(destination / "S")));

    // Undo brings everything back or says what it left; nothing is lost either way.
    const auto outcome = undo(report);
    if (outcome.isComplete()) {
        EXPECT_EQ(contents(tree.root()), before);
        EXPECT_FALSE(fs::exists(destination / "S"));
    } else {
        EXPECT_TRUE(tree.exists("S/" + chain + "/" + level));
        EXPECT_EQ(contents(destination / "S").count("a.txt"), 1U);
    }
}

// The same item named twice ("c" and "./c", as a glob and a name give it) is moved once: before,
// the second copy found its original gone, and undo put both copies in the Trash.
TEST_F(MoveOutcome, AnItemNamedTwiceIsMovedOnceAndUndoneOnce)
{
    tree.file("c", "C");
    for (const auto policy : {ConflictChoice::keepBoth, ConflictChoice::replace}) {
        SCOPED_TRACE(static_cast<int>(policy));
        const auto report =
            transfer(Kind::move, {tree / "c", tree / "./c"}, other.root(),
                     [policy](TransferEngine& engine, auto&, auto&) { engine.conflictPolicy = policy; });
        EXPECT_TRUE(report.failures.empty()) << messages(report.failures).front();
        ASSERT_EQ(report.completed.size(), 1U);
        EXPECT_EQ(contents(other.root()), (Picture{{"c", "C"}}));
        EXPECT_FALSE(tree.exists("c"));
        ASSERT_EQ(report.undoChanges.size(), 1U);

        EXPECT_TRUE(undo(report).isComplete());
        EXPECT_EQ(tree.read("c"), "C");
        EXPECT_TRUE(contents(other.root()).empty());
    }
}

// Replace is all or nothing: a new folder that could not be copied whole does not replace the
// old one, whose contents stay, and no hidden partial copy is left beside it.
TEST_F(MoveOutcome, ReplaceKeepsTheOldFolderWhenAnythingInsideTheNewOneFailed)
{
    struct Case {
        const char* name;
        Kind kind;
        bool acrossVolumes;
    };
    for (const auto& [name, kind, acrossVolumes] :
         {Case{"copy", Kind::copy, false}, Case{"copy across volumes", Kind::copy, true},
          Case{"move across volumes", Kind::move, true}}) {
        SCOPED_TRACE(name);
        TempTree here;
        tree.file("S/new.txt", "new");
        tree.fifo("S/pipe");
        const fs::path into = acrossVolumes ? other.root() / name : here.root();
        fs::create_directories(into / "S");
        std::ofstream(into / "S/old.txt") << "old";
        const Picture sourceBefore = contents(tree / "S");

        const auto report = transfer(kind, {tree / "S"}, into, [](TransferEngine& engine, auto&, auto&) {
            engine.conflictPolicy = ConflictChoice::replace;
        });

        EXPECT_EQ(contents(into), (Picture{{"S/", ""}, {"S/old.txt", "old"}}));
        EXPECT_EQ(contents(tree / "S"), sourceBefore);
        EXPECT_EQ(messages(report.failures),
                  (std::vector<std::string>{
                      "“pipe” is a special file (device, socket or pipe) and was not copied.",
                      "“S” was not replaced: not everything inside it could be copied. The existing item was left "
                      "unchanged."}));
        EXPECT_TRUE(report.completed.empty());
        EXPECT_TRUE(report.undoChanges.empty());
        test::removeTree(tree / "S");
    }
}

// What a cancelled move reports as moved is moved: gone from the source, recorded for undo,
// and undo brings exactly that back. What was not finished stays where it was.
TEST_F(MoveOutcome, CancellingAMoveAcrossVolumesFinishesOnlyWhatWasCopied)
{
    {
        SCOPED_TRACE("a clash answered Cancel");
        tree.file("one.txt", "1");
        tree.file("F/inner.txt", "inner");
        tree.file("clash.txt", "new");
        tree.file("four.txt", "4");
        std::ofstream(other / "clash.txt") << "old";
        const auto report = transfer(Kind::move, {tree / "one.txt", tree / "F", tree / "clash.txt", tree / "four.txt"},
                                     other.root(), [](TransferEngine& engine, auto&, auto&) {
                                         engine.conflictHandler = [](const NameConflict&) {
                                             return ConflictDecision{ConflictChoice::cancel, false};
                                         };
                                     });
        EXPECT_TRUE(report.cancelled);
        EXPECT_TRUE(report.failures.empty()) << messages(report.failures).front();
        EXPECT_EQ(contents(tree.root()), (Picture{{"clash.txt", "new"}, {"four.txt", "4"}}));
        EXPECT_EQ(contents(other.root()),
                  (Picture{{"clash.txt", "old"}, {"one.txt", "1"}, {"F/", ""}, {"F/inner.txt", "inner"}}));
        EXPECT_EQ(report.completed,
                  (std::vector<TransferredItem>{{tree / "one.txt", other / "one.txt"}, {tree / "F", other / "F"}}));
        EXPECT_EQ(report.undoChanges,
                  (std::vector<UndoChange>{
                      UndoChange::moved(tree / "one.txt", other / "one.txt", ItemStamp::of(other / "one.txt")),
                      UndoChange::moved(tree / "F", other / "F", ItemStamp::of(other / "F"))}));
        const auto outcome = undo(report);
        EXPECT_TRUE(outcome.isComplete()) << messages(outcome.problems).front();
        EXPECT_EQ(
            contents(tree.root()),
            (Picture{{"clash.txt", "new"}, {"four.txt", "4"}, {"one.txt", "1"}, {"F/", ""}, {"F/inner.txt", "inner"}}));
        EXPECT_EQ(contents(other.root()), (Picture{{"clash.txt", "old"}}));
        for (const char* name : {"clash.txt", "four.txt", "one.txt", "F"})
            test::removeTree(tree / name);
        fs::remove(other / "clash.txt");
    }
    {
        SCOPED_TRACE("Cancel pressed inside the second item");
        tree.file("small.txt", "small");
        tree.file("big.bin", std::string(64 << 20, 'b'));
        tree.file("after.txt", "after");
        std::atomic<bool> done = false;
        std::jthread canceller;
        const auto report =
            transfer(Kind::move, {tree / "small.txt", tree / "big.bin", tree / "after.txt"}, other.root(),
                     [&](TransferEngine& engine, CancellationToken& token, OperationProgressTracker& progress) {
                         engine.copyOptions.chunkBytes = 64 << 10;
                         engine.copyOptions.largestChunkBytes = 64 << 10;
                         engine.copyOptions.firstMethod = CopyMethod::copyFileRange;
                         canceller = std::jthread([&token, &progress, &done] {
                             while (!done && progress.snapshot().completedBytes <= 5)
                                 std::this_thread::yield();
                             token.cancel();
                         });
                     });
        done = true;
        EXPECT_TRUE(report.cancelled);
        EXPECT_TRUE(report.failures.empty());
        EXPECT_EQ(contents(other.root()), (Picture{{"small.txt", "small"}}));
        EXPECT_FALSE(tree.exists("small.txt"));
        EXPECT_EQ(fs::file_size(tree / "big.bin"), 64U << 20);
        EXPECT_TRUE(tree.exists("after.txt"));
        EXPECT_EQ(report.completed, (std::vector<TransferredItem>{{tree / "small.txt", other / "small.txt"}}));
        ASSERT_EQ(report.undoChanges.size(), 1U);
        const auto outcome = undo(report);
        EXPECT_TRUE(outcome.isComplete());
        EXPECT_EQ(tree.read("small.txt"), "small");
        EXPECT_TRUE(contents(other.root()).empty());
    }
}

// Another program renames the source folder while it is being moved: the copy is complete or
// says what it missed, has the folder's own mode, and the report does not call it moved.
TEST_F(MoveOutcome, ASourceFolderRenamedDuringAMoveIsNotReportedAsMoved)
{
    {
        SCOPED_TRACE("renamed after the copy, before the removal");
        tree.file("S/a.txt", "a");
        tree.file("S/sub/b.txt", "b");
        ::chmod((tree / "S").c_str(), 0751);
        const Picture before = contents(tree / "S");
        const auto report = transfer(Kind::move, {tree / "S"}, other.root(), [&](TransferEngine& engine, auto&, auto&) {
            engine.beforeSourceRemoval = [&] { fs::rename(tree / "S", tree / "S2"); };
        });
        EXPECT_EQ(contents(tree / "S2"), before);
        EXPECT_EQ(contents(other / "S"), before);
        EXPECT_EQ(fs::status(other / "S").permissions(), static_cast<fs::perms>(0751));
        EXPECT_EQ(messages(report.failures),
                  std::vector<std::string>{"“S” was copied, but the original could not be removed: it is no longer "
                                           "where it was (another program moved or deleted it during the move)."});
        EXPECT_TRUE(report.completed.empty());
        EXPECT_EQ(report.undoChanges,
                  std::vector<UndoChange>{UndoChange::created(other / "S", ItemStamp::of(other / "S"))});
        const auto outcome = undo(report);
        EXPECT_TRUE(outcome.isComplete());
        EXPECT_TRUE(contents(other.root()).empty());
        EXPECT_EQ(contents(tree / "S2"), before);
        test::removeTree(tree / "S2");
    }
    {
        SCOPED_TRACE("renamed while it is copied");
        for (int i = 0; i < 40; ++i)
            tree.file("S/d" + std::to_string(i % 4) + "/f" + std::to_string(i), std::string(100'000, 'x'));
        ::chmod((tree / "S").c_str(), 0750);
        const Picture before = contents(tree / "S");
        std::jthread renamer;
        const auto report = transfer(Kind::move, {tree / "S"}, other.root(),
                                     [&](TransferEngine&, auto&, OperationProgressTracker& progress) {
                                         renamer = std::jthread([&] {
                                             while (progress.snapshot().completedItems < 3)
                                                 std::this_thread::yield();
                                             fs::rename(tree / "S", tree / "S2");
                                         });
                                     });
        renamer.join();
        // Nothing was removed from under its new name, whenever the rename came.
        EXPECT_EQ(contents(tree / "S2"), before);
        EXPECT_FALSE(report.isCompleteSuccess());
        EXPECT_TRUE(report.completed.empty());
        if (fs::exists(other / "S")) {
            EXPECT_EQ(fs::status(other / "S").permissions(), static_cast<fs::perms>(0750));
            EXPECT_EQ(report.undoChanges,
                      std::vector<UndoChange>{UndoChange::created(other / "S", ItemStamp::of(other / "S"))});
        } else {
            EXPECT_TRUE(report.undoChanges.empty());
        }
        const auto outcome = undo(report);
        EXPECT_TRUE(outcome.isComplete()) << messages(outcome.problems).front();
        EXPECT_TRUE(contents(other.root()).empty());
        EXPECT_EQ(contents(tree / "S2"), before);
    }
}

// As an ordinary user, a folder that cannot be emptied is not moved to another volume at all:
// nothing is copied and nothing removed, rather than part of it.
TEST_F(MoveOutcome, AFolderThatCannotBeEmptiedIsNotMovedAcrossVolumes)
{
    ::chmod(tree.root().c_str(), 0777);
    ::chmod(other.root().c_str(), 0777);
    tree.file("RO/a.txt", "a");
    tree.file("RO/sub/b.txt", "b");
    tree.file("fixed/W/c.txt", "c");
    for (const char* path : {"RO", "RO/a.txt", "RO/sub", "RO/sub/b.txt", "fixed/W", "fixed/W/c.txt"})
        (void)::chown((tree / path).c_str(), test::nobodyId, test::nobodyId);
    ::chmod((tree / "RO").c_str(), 0555);
    ::chmod((tree / "fixed").c_str(), 0555);
    const Picture before = contents(tree.root());

    std::vector<UndoChange> changes;
    const auto result = test::runUnprivileged([&]() -> std::string {
        std::string seen;
        for (const char* name : {"RO", "fixed/W"}) {
            const auto report = transfer(Kind::move, {tree / name}, other.root());
            for (const auto& text : messages(report.failures))
                seen += text + "\n";
            seen += std::to_string(report.completed.size()) + " " + std::to_string(report.undoChanges.size()) + "\n";
        }
        return seen;
    });
    ::chmod((tree / "RO").c_str(), 0755);
    ::chmod((tree / "fixed").c_str(), 0755);
    if (!result)
        GTEST_SKIP() << result.error();
    EXPECT_EQ(*result, "Couldn’t move “RO”: Permission denied.\n0 0\nCouldn’t move “W”: Permission denied.\n0 0\n");
    EXPECT_EQ(contents(tree.root()), before);
    EXPECT_TRUE(contents(other.root()).empty());
}

// Undo of a merge puts back the folder the merge emptied and removed, and redo merges again.
TEST_F(MoveOutcome, UndoingAMergeRecreatesTheFolderItEmptied)
{
    for (const bool acrossVolumes : {false, true}) {
        SCOPED_TRACE(acrossVolumes ? "across volumes" : "on one volume");
        const fs::path into = acrossVolumes ? other.root() : tree.root() / "into";
        tree.file("S/a.txt", "a");
        tree.file("S/sub/b.txt", "b");
        tree.folder("S/empty");
        ::chmod((tree / "S").c_str(), 0750);
        fs::create_directories(into / "S/sub");
        std::ofstream(into / "S/x.txt") << "x";
        std::ofstream(into / "S/sub/y.txt") << "y";
        const Picture source = contents(tree / "S");
        const Picture existing = contents(into / "S");
        const Picture merged{{"a.txt", "a"},     {"empty/", ""},     {"sub/", ""},
                             {"sub/b.txt", "b"}, {"sub/y.txt", "y"}, {"x.txt", "x"}};

        const auto report = transfer(Kind::move, {tree / "S"}, into,
                                     [](TransferEngine& engine, auto&, auto&) { engine.mergeFolders = true; });
        EXPECT_TRUE(report.isCompleteSuccess()) << messages(report.failures).front();
        EXPECT_FALSE(tree.exists("S"));
        EXPECT_EQ(contents(into / "S"), merged);

        const auto undone = undo(report);
        EXPECT_TRUE(undone.isComplete()) << messages(undone.problems).front();
        EXPECT_EQ(contents(tree / "S"), source);
        EXPECT_EQ(fs::status(tree / "S").permissions(), static_cast<fs::perms>(0750));
        EXPECT_EQ(contents(into / "S"), existing);

        const auto redone = FileUndo::revert(undone.inverse, trashWithin({tree.root(), other.root()}));
        EXPECT_TRUE(redone.isComplete()) << messages(redone.problems).front();
        EXPECT_FALSE(tree.exists("S"));
        EXPECT_EQ(contents(into / "S"), merged);

        const auto again = FileUndo::revert(redone.inverse, trashWithin({tree.root(), other.root()}));
        EXPECT_TRUE(again.isComplete()) << messages(again.problems).front();
        EXPECT_EQ(contents(tree / "S"), source);
        EXPECT_EQ(contents(into / "S"), existing);
        test::removeTree(tree / "S");
        test::removeTree(into / "S");
    }
}

} // namespace
} // namespace orbisk
