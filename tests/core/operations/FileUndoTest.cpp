#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <map>
#include <thread>

#include "TransferTestSupport.h"
#include "UndoTestSupport.h"
#include "operations/CrossVolumeMove.h"
#include "operations/FileUndo.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "operations/TrashOperation.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::picture;
using test::TempTree;

std::vector<std::string> messages(const UndoOutcome& outcome)
{
    std::vector<std::string> texts;
    for (const auto& problem : outcome.problems)
        texts.push_back(problem.message());
    return texts;
}

void write(const fs::path& path, std::string_view contents)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << contents;
}

UndoRecord movedByHand(const fs::path& from, const fs::path& to)
{
    if (::rename(from.c_str(), to.c_str()) != 0)
        throw std::runtime_error("cannot rename " + from.native());
    return {"Move", {UndoChange::moved(from, to, ItemStamp::of(to))}};
}

class FileUndoTest : public testing::Test {
protected:
    FileUndoTest() { tree.file("work/a\xE9.txt", "original"); }

    UndoOutcome revert(const UndoRecord& record) { return FileUndo::revert(record, FileUndo::systemTrash()); }

    fs::path item() const { return tree / "work/a\xE9.txt"; }

    TempTree tree;
    test::PrivateTrash trash{tree};
    fs::path work = tree / "work";
};

TEST_F(FileUndoTest, DoUndoRedoUndoLeavesTheDiskAsExpectedEachTime)
{
    struct Case {
        std::string name;
        std::function<UndoRecord()> act;
    };
    const Case cases[] = {
        {"rename",
         [&] {
             auto to = ItemActions::rename(item(), "b\xFF.txt").value();
             return UndoRecord{"Rename", {UndoChange::moved(item(), to, ItemStamp::of(to))}};
         }},
        {"new folder",
         [&] {
             auto made = ItemActions::createDirectory("New Folder", work).value();
             return UndoRecord{"New Folder", {UndoChange::created(made, ItemStamp::of(made))}};
         }},
        {"new file",
         [&] {
             auto made = ItemActions::createEmptyFile("New Text File.txt", work).value();
             return UndoRecord{"New File", {UndoChange::created(made, ItemStamp::of(made))}};
         }},
        {"trash a file and a folder",
         [&] {
             CancellationToken token;
             OperationProgressTracker progress;
             auto report = TrashOperation::run({item(), work / "folder"}, token, progress);
             return UndoRecord{"Move to Trash", std::move(report.undoChanges)};
         }},
        {"copy",
         [&] {
             const auto copy = work / "a\xE9 copy.txt";
             fs::copy_file(item(), copy);
             return UndoRecord{"Copy", {UndoChange::created(copy, ItemStamp::of(copy))}};
         }},
        {"move into a folder, then new folder with selection",
         [&] {
             auto folder = ItemActions::createDirectory("Selection", work).value();
             auto record = movedByHand(item(), folder / "a\xE9.txt");
             record.changes.insert(record.changes.begin(), UndoChange::created(folder, ItemStamp::of(folder)));
             return record;
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::removeTree(work);
        tree.file("work/a\xE9.txt", "original");
        tree.file("work/folder/inside", "x");
        const auto before = picture(work);
        const auto record = c.act();
        const auto after = picture(work);
        ASSERT_NE(before, after);

        auto undone = revert(record);
        EXPECT_EQ(messages(undone), std::vector<std::string>{});
        EXPECT_EQ(picture(work), before);
        EXPECT_EQ(undone.inverse.name, record.name);

        auto redone = revert(undone.inverse);
        EXPECT_EQ(messages(redone), std::vector<std::string>{});
        EXPECT_EQ(picture(work), after);

        auto undoneAgain = revert(redone.inverse);
        EXPECT_EQ(messages(undoneAgain), std::vector<std::string>{});
        EXPECT_EQ(picture(work), before);
    }
    EXPECT_EQ(picture(trash.folder() / "info").size(), picture(trash.folder() / "files").size())
        << "every item put back took its .trashinfo file with it";
}

TEST_F(FileUndoTest, RefusesExactlyWhenTheItemIsNoLongerAsTheOperationLeftIt)
{
    struct Case {
        std::string name;
        std::function<UndoRecord()> act;
        std::function<void()> meddle;
        std::vector<std::string> expected;
    };
    const auto copy = work / "copy.txt";
    const auto makeCopy = [&] {
        fs::copy_file(item(), copy);
        return UndoRecord{"Copy", {UndoChange::created(copy, ItemStamp::of(copy))}};
    };
    const auto trashItem = [&] {
        CancellationToken token;
        OperationProgressTracker progress;
        return UndoRecord{"Move to Trash", TrashOperation::run({item()}, token, progress).undoChanges};
    };
    const Case cases[] = {
        {"copy edited",
         makeCopy,
         [&] { write(copy, "edited!!"); },
         {"“copy.txt” changed after the operation, so it was left as it is."}},
        {"copy rewritten with the same bytes",
         makeCopy,
         [&] {
             struct stat st {};
             ::lstat(copy.c_str(), &st);
             write(copy, "original");
             const timespec later[2] = {{0, UTIME_OMIT}, {st.st_mtim.tv_sec + 5, 0}};
             ::utimensat(AT_FDCWD, copy.c_str(), later, AT_SYMLINK_NOFOLLOW);
         },
         {"“copy.txt” changed after the operation, so it was left as it is."}},
        {"copy removed", makeCopy, [&] { fs::remove(copy); }, {"“copy.txt” is no longer where the operation left it."}},
        {"copy replaced by another file of the same name",
         makeCopy,
         [&] {
             fs::remove(copy);
             fs::copy_file(item(), copy);
         },
         {"“copy.txt” changed after the operation, so it was left as it is."}},
        {"moved item's old place retaken",
         [&] { return movedByHand(item(), work / "moved.txt"); },
         [&] { tree.file("work/a\xE9.txt", "newcomer"); },
         {"Another item named “a\\xE9.txt” is now in its old place, so it was left where it is."}},
        {"moved item gone",
         [&] { return movedByHand(item(), work / "moved.txt"); },
         [&] { fs::remove(work / "moved.txt"); },
         {"“moved.txt” is no longer where the operation left it."}},
        {"trashed item's old place retaken",
         trashItem,
         [&] { tree.file("work/a\xE9.txt", "newcomer"); },
         {"Another item named “a\\xE9.txt” is now in its old place, so it was left where it is."}},
        {"trash emptied",
         trashItem,
         [&] { test::removeTree(trash.folder()); },
         {"“a\\xE9.txt” is no longer in the Trash (it may have been emptied)."}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::removeTree(work);
        tree.file("work/a\xE9.txt", "original");
        const auto record = c.act();
        c.meddle();
        const auto before = picture(tree.root());
        const auto outcome = revert(record);
        EXPECT_EQ(messages(outcome), c.expected);
        EXPECT_TRUE(outcome.inverse.isEmpty());
        EXPECT_EQ(picture(tree.root()), before) << "a refused change leaves everything where it is";
    }
}

// The Trash gives a name back once its item is gone, so "something is at inTrash" proves nothing:
// undo and redo bring back only the very item they put there.
TEST_F(FileUndoTest, AnotherItemTrashedLaterUnderTheSameNameIsNeverTakenOutOfTheTrash)
{
    const auto trashOne = [&](const fs::path& item) {
        CancellationToken token;
        OperationProgressTracker progress;
        return UndoRecord{"Move to Trash", TrashOperation::run({item}, token, progress).undoChanges};
    };
    const auto emptyTrash = [&] {
        test::removeTree(trash.folder() / "files");
        test::removeTree(trash.folder() / "info");
    };

    // Undo: the trashed file was emptied from the Trash by hand, then another file of that name trashed.
    const auto record = trashOne(item());
    ASSERT_EQ(record.changes.size(), 1u);
    const auto inTrash = std::get<UndoChange::Trashed>(record.changes[0].change).inTrash;
    emptyTrash();
    tree.file("work/a\xE9.txt", "someone else's");
    const auto later = trashOne(item());
    ASSERT_EQ(std::get<UndoChange::Trashed>(later.changes[0].change).inTrash, inTrash) << "the name came free again";
    const auto before = picture(tree.root());
    const auto undone = revert(record);
    EXPECT_EQ(messages(undone),
              std::vector<std::string>{"“a\\xE9.txt” is no longer in the Trash (it may have been emptied)."});
    EXPECT_TRUE(undone.inverse.isEmpty());
    EXPECT_EQ(picture(tree.root()), before) << "nothing moved, and the later item keeps its .trashinfo";
    EXPECT_FALSE(fs::exists(item()));

    // Its own record still brings the later item back, which proves the check is by identity.
    const auto restored = revert(later);
    EXPECT_EQ(messages(restored), std::vector<std::string>{});
    EXPECT_EQ(tree.read("work/a\xE9.txt"), "someone else's");

    // Redo: undoing a new file put it in the Trash; the same happens to it there before Redo.
    fs::remove(item());
    const auto made = ItemActions::createEmptyFile("made.txt", work).value();
    const auto created = revert({"New File", {UndoChange::created(made, ItemStamp::of(made))}});
    ASSERT_EQ(messages(created), std::vector<std::string>{});
    emptyTrash();
    tree.file("work/made.txt", "not the new file");
    ASSERT_EQ(trashOne(work / "made.txt").changes.size(), 1u);
    const auto beforeRedo = picture(tree.root());
    const auto redone = revert(created.inverse);
    EXPECT_EQ(messages(redone),
              std::vector<std::string>{"“made.txt” is no longer in the Trash (it may have been emptied)."});
    EXPECT_EQ(picture(tree.root()), beforeRedo);

    // The stamp survives the record's JSON, as the command line keeps it between runs.
    const auto reread = UndoRecord::fromJson(nlohmann::ordered_json::parse(record.toJson().dump()));
    ASSERT_TRUE(reread);
    EXPECT_EQ(messages(revert(*reread)),
              std::vector<std::string>{"“a\\xE9.txt” is no longer in the Trash (it may have been emptied)."});
}

TEST_F(FileUndoTest, FoldersAreComparedByIdentityAndUnreadStampsAreAccepted)
{
    tree.file("src/album/one", "1");
    const auto copied = test::transfer(TransferEngine::Kind::copy, {tree / "src/album"}, work);
    ASSERT_TRUE(copied.isCompleteSuccess());
    UndoRecord record{"Copy", copied.undoChanges};
    record.changes.push_back(UndoChange::created(item(), std::nullopt));
    // A file added to the copied folder since goes to the Trash with it, where it can be recovered.
    tree.file("work/album/added later", "new");
    write(item(), "rewritten");
    const auto before = picture(work);

    const auto outcome = revert(record);
    EXPECT_EQ(messages(outcome), std::vector<std::string>{});
    EXPECT_FALSE(tree.exists("work/album"));
    EXPECT_FALSE(fs::exists(item()));
    EXPECT_EQ(tree.read("data/Trash/files/album/added later"), "new");
    ASSERT_EQ(outcome.inverse.changes.size(), 2u);
    EXPECT_EQ(std::get<UndoChange::Trashed>(outcome.inverse.changes[0].change).original, item())
        << "the inverse lists changes in the order the revert made them: the last first";

    const auto redone = revert(outcome.inverse);
    EXPECT_EQ(messages(redone), std::vector<std::string>{});
    EXPECT_EQ(picture(work), before);
}

// Undo goes backwards, so the items moved into a new folder are handled before the folder. One of
// them left as it is keeps the folder, which would otherwise take it to the Trash while the report
// says it was left.
TEST_F(FileUndoTest, ANewFolderStaysWhenUndoLeavesAnItemInsideIt)
{
    const auto b = work / "b";
    struct Case {
        std::string name;
        std::function<void()> meddle;
        std::string problem; ///< what undo says about the item it left in the folder
        std::map<std::string, std::string> left;
    };
    const std::string kept = "“Selection” still holds items that were left as they are, so it was left where it is.";
    const Case cases[] = {
        {"a moved file edited",
         [&] { write(work / "Selection/a\xE9.txt", "edited"); },
         "“a\\xE9.txt” changed after the operation, so it was left as it is.",
         {{"Selection/", ""}, {"Selection/a\xE9.txt", "edited"}, {"b", "b"}}},
        {"a moved file renamed inside the folder",
         [&] { fs::rename(work / "Selection/a\xE9.txt", work / "Selection/renamed"); },
         "“a\\xE9.txt” is no longer where the operation left it.",
         {{"Selection/", ""}, {"Selection/renamed", "original"}, {"b", "b"}}},
        {"the old place of a moved file taken",
         [&] { tree.file("work/a\xE9.txt", "newer"); },
         "Another item named “a\\xE9.txt” is now in its old place, so it was left where it is.",
         {{"Selection/", ""}, {"Selection/a\xE9.txt", "original"}, {"a\xE9.txt", "newer"}, {"b", "b"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::removeTree(work);
        test::removeTree(trash.folder());
        tree.file("work/a\xE9.txt", "original");
        tree.file("work/b", "b");
        // New Folder with Selection: the folder, then each item moved into it.
        const auto folder = ItemActions::createDirectory("Selection", work).value();
        UndoRecord record{"New Folder with Selection", {UndoChange::created(folder, ItemStamp::of(folder))}};
        for (const auto& moved : {movedByHand(item(), folder / "a\xE9.txt"), movedByHand(b, folder / "b")})
            record.changes.push_back(moved.changes.front());
        c.meddle();

        const auto undone = revert(record);
        EXPECT_EQ(messages(undone), (std::vector<std::string>{c.problem, kept}));
        EXPECT_EQ(picture(work), c.left);
        EXPECT_FALSE(tree.exists("data/Trash/files/Selection"));
        ASSERT_EQ(undone.inverse.changes.size(), 1u) << "only b went back";
        EXPECT_EQ(undone.inverse.changes[0], UndoChange::moved(folder / "b", b, ItemStamp::of(b)));
        const auto report = FileUndo::reportOf(undone);
        ASSERT_EQ(report.completed.size(), 1u);
        EXPECT_EQ(report.completed[0].destination, b);
        EXPECT_EQ(report.failures.size(), 2u);

        // Redo of what undo did puts b back into the folder it stayed in, and undo takes it out again.
        const auto redone = revert(undone.inverse);
        EXPECT_EQ(messages(redone), std::vector<std::string>{});
        EXPECT_EQ(tree.read("work/Selection/b"), "b");
        EXPECT_FALSE(tree.exists("work/b"));
        EXPECT_EQ(messages(revert(redone.inverse)), std::vector<std::string>{});
        EXPECT_EQ(picture(work), c.left);
    }
}

TEST_F(FileUndoTest, SwapsAndRotationsOfNamesUndoThroughHiddenNamesThatDoNotStay)
{
    const auto a = work / "a", b = work / "b", c = tree.folder("other") / "c";
    const auto reset = [&] {
        for (const auto& p : {a, b, c})
            fs::remove(p);
        write(a, "A");
        write(b, "B");
        write(c, "C");
    };
    const auto rotate = [](std::vector<fs::path> places) {
        // Moves the item at places[i] to places[i + 1], the last to the first, through one free name.
        const auto aside = places.back().parent_path() / "aside";
        fs::rename(places.back(), aside);
        for (auto i = places.size() - 1; i > 0; --i)
            fs::rename(places[i - 1], places[i]);
        fs::rename(aside, places.front());
        UndoRecord record{"Rename", {}};
        for (std::size_t i = 0; i < places.size(); ++i) {
            const auto& to = places[(i + 1) % places.size()];
            record.changes.push_back(UndoChange::moved(places[i], to, ItemStamp::of(to)));
        }
        return record;
    };
    for (const auto& places : {std::vector{a, b}, std::vector{a, b, c}}) {
        SCOPED_TRACE(places.size());
        reset();
        const auto before = picture(tree.root());
        const auto record = rotate(places);
        const auto after = picture(tree.root());

        auto undone = revert(record);
        EXPECT_EQ(messages(undone), std::vector<std::string>{});
        EXPECT_EQ(picture(tree.root()), before);
        auto redone = revert(undone.inverse);
        EXPECT_EQ(messages(redone), std::vector<std::string>{});
        EXPECT_EQ(picture(tree.root()), after);
        EXPECT_EQ(messages(revert(redone.inverse)), std::vector<std::string>{});
        EXPECT_EQ(picture(tree.root()), before);
    }

    // One member of a swap edited: it stays, and so does its partner, whose old place it holds.
    reset();
    const auto record = rotate({a, b});
    write(b, "edited");
    const auto before = picture(tree.root());
    const auto outcome = revert(record);
    EXPECT_EQ(messages(outcome), (std::vector<std::string>{
                                     "“b” changed after the operation, so it was left as it is.",
                                     "Another item named “b” is now in its old place, so it was left where it is."}));
    EXPECT_EQ(picture(tree.root()), before) << "the partner came back from its hidden name";
}

TEST_F(FileUndoTest, MovesBackAcrossVolumesWithoutOverwritingOrLeavingHiddenCopies)
{
    TempTree other("/dev/shm");
    if (test::onSameVolume(work, other.root()))
        GTEST_SKIP() << "/dev/shm is not another volume here";

    // A folder that an operation moved from the other volume (by copying it here).
    other.file("album \xE9/one", "1");
    other.link("album \xE9/link", "one");
    const auto from = other / "album \xE9";
    const auto otherBefore = picture(other.root());
    fs::copy(from, work / "album \xE9", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    fs::remove_all(from);
    const UndoRecord record{"Move", {UndoChange::moved(from, work / "album \xE9", ItemStamp::of(work / "album \xE9"))}};
    const auto workAfter = picture(work);

    auto undone = revert(record);
    EXPECT_EQ(messages(undone), std::vector<std::string>{});
    EXPECT_EQ(picture(other.root()), otherBefore);
    EXPECT_FALSE(fs::exists(work / "album \xE9"));
    auto redone = revert(undone.inverse);
    EXPECT_EQ(messages(redone), std::vector<std::string>{});
    EXPECT_EQ(picture(work), workAfter);
    EXPECT_TRUE(picture(other.root()).empty());

    // An item in this volume's Trash whose old place is now on the other volume.
    tree.file("data/Trash/files/note", "trashed");
    tree.file("data/Trash/info/note.trashinfo", "[Trash Info]\nPath=/x/note\nDeletionDate=2024-01-01T00:00:00\n");
    const auto restored = revert({"Move to Trash",
                                  {UndoChange::trashed(other / "note", tree / "data/Trash/files/note",
                                                       ItemStamp::of(tree / "data/Trash/files/note"))}});
    EXPECT_EQ(messages(restored), std::vector<std::string>{});
    EXPECT_EQ(other.read("note"), "trashed");
    EXPECT_FALSE(tree.exists("data/Trash/files/note"));
    EXPECT_FALSE(tree.exists("data/Trash/info/note.trashinfo"));

    // The copy never takes a name that is taken, and leaves no hidden copy behind.
    other.file("taken", "theirs");
    const auto failed = CrossVolumeMove::move(item(), other / "taken");
    EXPECT_FALSE(failed.arrived);
    EXPECT_TRUE(failed.placeTaken);
    EXPECT_TRUE(failed.problems.empty());
    EXPECT_EQ(other.read("taken"), "theirs");
    EXPECT_EQ(tree.read("work/a\xE9.txt"), "original");
    EXPECT_EQ(picture(other.root()).size(), 2u) << "only note and taken";
}

// Undo takes an item back across volumes by copying it and removing the original. A file written
// into the original while the copy runs must survive that, and the report must say it stayed.
TEST_F(FileUndoTest, WhatIsWrittenIntoAnItemWhileUndoCopiesItAcrossVolumesStaysAndIsNamed)
{
    TempTree other("/dev/shm");
    if (test::onSameVolume(work, other.root()))
        GTEST_SKIP() << "/dev/shm is not another volume here";
    const std::string block(4096, 'x');
    struct Case {
        std::string name;
        fs::path current; ///< where the item is when undo starts
        std::function<UndoRecord()> record;
    };
    const auto from = other / "album";
    const auto inTrash = tree / "data/Trash/files/album";
    const Case cases[] = {
        {"moved here from the other volume", work / "album",
         [&] {
             return UndoRecord{"Move", {UndoChange::moved(from, work / "album", ItemStamp::of(work / "album"))}};
         }},
        {"trashed from the other volume into this one's Trash", inTrash,
         [&] {
             tree.file("data/Trash/info/album.trashinfo",
                       "[Trash Info]\nPath=" + from.native() + "\nDeletionDate=2024-01-01T00:00:00\n");
             return UndoRecord{"Move to Trash", {UndoChange::trashed(from, inTrash, ItemStamp::of(inTrash))}};
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto current = c.current;
        for (int i = 0; i < 1500; ++i)
            tree.file((current / ("f" + std::to_string(i))).lexically_relative(tree.root()).native(), block);
        const auto record = c.record();

        // The writer waits until the first file has been copied to the other volume, then changes
        // that file in the original and adds a new one beside it. The changed file must stay; the
        // new one may or may not be seen by the copy, and is then either copied or left.
        std::atomic<bool> stop = false;
        std::string changed;
        bool added = false;
        std::thread writer([&] {
            while (!stop && changed.empty()) {
                std::error_code error;
                for (fs::directory_iterator it(from, error), end; !error && it != end; it.increment(error))
                    if (it->path().filename().native().starts_with("f")) {
                        changed = it->path().filename().native();
                        break;
                    }
            }
            if (changed.empty() || ::truncate((current / changed).c_str(), 10) != 0)
                return;
            const int fd = ::open((current / "added.txt").c_str(), O_CREAT | O_EXCL | O_WRONLY, 0644);
            added = fd >= 0 && ::write(fd, "during", 6) == 6;
            if (fd >= 0)
                ::close(fd);
        });
        const auto outcome = revert(record);
        stop = true;
        writer.join();
        ASSERT_TRUE(added) << "the undo ended before the writer could write: the test needs more files";

        auto left = test::picture(current);
        auto back = test::picture(from);
        EXPECT_EQ(left[changed], block.substr(0, 10)) << "a file changed after it was copied stays, changed";
        EXPECT_EQ(back[changed], block);
        const bool addedLeft = left.contains("added.txt");
        EXPECT_EQ(addedLeft ? left["added.txt"] : back["added.txt"], "during");
        EXPECT_EQ(left.size(), addedLeft ? 2u : 1u) << "only what was added or changed stays";
        EXPECT_EQ(back.size(), addedLeft ? 1500u : 1501u);
        const std::string names = addedLeft ? changed + ", added.txt" : changed;
        const std::string count = addedLeft ? "2" : "1";
        EXPECT_EQ(messages(outcome),
                  std::vector<std::string>{"“" + current.filename().native() +
                                           "” was copied, but the original could not be removed: " + count +
                                           " items were added, changed or could not be removed during the move and "
                                           "were left in place (" +
                                           names + ")."});
        ASSERT_EQ(outcome.inverse.changes.size(), 1u);
        const bool fromTrash = std::holds_alternative<UndoChange::Trashed>(record.changes[0].change);
        EXPECT_EQ(outcome.inverse.changes[0], fromTrash ? UndoChange::created(from, ItemStamp::of(from))
                                                        : UndoChange::moved(current, from, ItemStamp::of(from)));
        if (fromTrash) {
            EXPECT_TRUE(tree.exists("data/Trash/info/album.trashinfo")) << "what stayed in the Trash is still listed";
        }
        test::removeTree(current);
        test::removeTree(from);
    }
}

TEST_F(FileUndoTest, ASystemFailureIsReportedAndLeavesTheItem)
{
    ::chmod(tree.root().c_str(), 0755);
    ::chmod(work.c_str(), 0777);
    tree.folder("work/locked");
    const auto record = movedByHand(item(), work / "locked/moved.txt");
    ::chmod((work / "locked").c_str(), 0755);
    const auto outcome = test::runUnprivileged([&]() -> std::string {
        const auto result = FileUndo::revert(record, FileUndo::systemTrash());
        std::string text;
        for (const auto& problem : result.problems)
            text += problem.message() + (problem.error.isPermissionDenied() ? " [denied]" : "");
        return text;
    });
    if (!outcome)
        GTEST_SKIP() << outcome.error();
    EXPECT_EQ(*outcome, "Couldn’t move “moved.txt”: Permission denied. [denied]");
    EXPECT_EQ(tree.read("work/locked/moved.txt"), "original");
    EXPECT_FALSE(tree.exists("work/a\xE9.txt"));
}

TEST(UndoRecord, RoundTripsThroughJsonWithEveryByteOfItsPaths)
{
    const ItemStamp stamp{std::numeric_limits<std::uint64_t>::max(), 42, false, 7, -1'500'000'000};
    const UndoRecord record{
        "Rename “caf\xE9” 100%",
        {UndoChange::moved("/a/caf\xE9", "/a/%41 \xFF\xFE\n\"quoted\"", stamp),
         UndoChange::created("/b/new folder", ItemStamp{1, 2, true, 4096, 0}),
         UndoChange::created("/b/unknown", std::nullopt),
         UndoChange::trashed("/c/\xC3\xA9t\xC3\xA9", "/home/u/.local/share/Trash/files/\xC3\xA9t\xC3\xA9", stamp),
         UndoChange::trashed("/c/old", "/t/old", std::nullopt)}};
    const auto text = record.toJson().dump();
    const auto parsed = nlohmann::ordered_json::parse(text); // throws if the text were not valid UTF-8 JSON
    const auto back = UndoRecord::fromJson(parsed);
    ASSERT_TRUE(back) << back.error();
    EXPECT_EQ(*back, record);
    EXPECT_NE(text.find("/a/%2541 %FF%FE"), std::string::npos) << "only “%” and bytes outside UTF-8 are escaped";
    EXPECT_NE(text.find("\xC3\xA9t\xC3\xA9"), std::string::npos);

    // Records written before trashed items kept their stamp still read, without one.
    const auto older = UndoRecord::fromJson(nlohmann::ordered_json::parse(
        R"({"name":"x","changes":[{"kind":"trashed","original":"/a","inTrash":"/t/a"}]})"));
    ASSERT_TRUE(older) << older.error();
    EXPECT_EQ(older->changes.front(), UndoChange::trashed("/a", "/t/a", std::nullopt));

    for (
        const auto* bad :
        {R"({"name":"x","changes":[],"extra":1})",
         R"({"name":"x","changes":[{"kind":"copied","at":"/a","stamp":null}]})",
         R"({"name":"x","changes":[{"kind":"created","at":"/a"}]})",
         R"({"name":"x","changes":[{"kind":"created","at":"/a%G0","stamp":null}]})",
         R"({"name":"x","changes":[{"kind":"created","at":"/a","stamp":{"device":-1,"inode":1,"isDirectory":false,"size":0,"modified":0}}]})",
         R"({"name":"x","changes":[{"kind":"trashed","original":1,"inTrash":"/t"}]})",
         R"({"name":"x","changes":[{"kind":"trashed","original":"/a","inTrash":"/t","stamp":7}]})"}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(UndoRecord::fromJson(nlohmann::ordered_json::parse(bad)));
    }
}

} // namespace
} // namespace orbisk
