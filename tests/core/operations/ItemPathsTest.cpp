// Items named with "." and ".." components, as every operation receives them.
#include <gtest/gtest.h>

#include <unistd.h>

#include "TransferTestSupport.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "operations/TrashOperation.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

TEST(ItemPaths, DotDotAfterALinkNamesTheItemTheKernelFinds)
{
    // lnk leads to real/sub, so lnk/.. is real; the tree's top holds decoys of the same names.
    TempTree tree;
    const auto top = fs::canonical(tree.root());
    tree.folder("real/sub");
    tree.link("lnk", "real/sub");
    tree.folder("dest");
    for (const std::string name : {"t", "m", "r"}) {
        tree.file("real/" + name, "real");
        tree.file(name, "decoy");
    }
    tree.file("new.txt", "new");

    CancellationToken token;
    OperationProgressTracker progress;
    const Trash trash(tree / "data/Trash", ::getuid());
    const auto trashed = TrashOperation::run({tree / "lnk/../t"}, token, progress, trash);
    ASSERT_EQ(trashed.completed.size(), 1u);
    EXPECT_EQ(trashed.completed[0].source, top / "real/t");
    EXPECT_EQ(trashed.undoChanges.at(0), UndoChange::trashed(top / "real/t", trashed.completed[0].destination,
                                                             ItemStamp::of(trashed.completed[0].destination)));
    EXPECT_EQ(tree.read("data/Trash/files/t"), "real");
    EXPECT_EQ(tree.read("t"), "decoy");

    const auto moved = test::transfer(TransferEngine::Kind::move, {tree / "lnk/../m"}, tree / "dest");
    ASSERT_EQ(moved.completed.size(), 1u) << (moved.failures.empty() ? "" : moved.failures[0].message());
    EXPECT_EQ(moved.completed[0].source, top / "real/m");
    ASSERT_EQ(moved.undoChanges.size(), 1u);
    const auto* change = std::get_if<UndoChange::Moved>(&moved.undoChanges[0].change);
    ASSERT_NE(change, nullptr);
    EXPECT_EQ(change->from, top / "real/m");
    EXPECT_EQ(tree.read("dest/m"), "real");
    EXPECT_EQ(tree.read("m"), "decoy");

    const auto renamed = ItemActions::rename(tree / "lnk/../r", "r2");
    ASSERT_TRUE(renamed) << renamed.error().errorDescription();
    EXPECT_EQ(*renamed, top / "real/r2");
    EXPECT_EQ(tree.read("real/r2"), "real");

    // A destination folder ending in ".." is that folder of the kernel's too.
    const auto copied = test::transfer(TransferEngine::Kind::copy, {tree / "new.txt"}, tree / "lnk/..");
    ASSERT_EQ(copied.completed.size(), 1u);
    EXPECT_EQ(copied.completed[0].destination, top / "real/new.txt");
    ASSERT_EQ(copied.undoChanges.size(), 1u);
    const auto* created = std::get_if<UndoChange::Created>(&copied.undoChanges[0].change);
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->at, top / "real/new.txt");
}

void isInvalidName(const ItemFailure& failure)
{
    const auto* error = failure.error.as<FileOperationError>();
    ASSERT_NE(error, nullptr) << failure.message();
    EXPECT_EQ(error->kind(), FileOperationError::Kind::invalidName) << failure.message();
}

TEST(ItemPaths, APathEndingInDotOrDotDotIsNoItemOfAnyOperation)
{
    TempTree tree;
    tree.folder("work/a/b");
    tree.file("work/a/f", "f");
    const auto before = test::entriesBelow(tree.root());
    // Another volume when there is one: a move there copies and then deletes the original.
    const fs::path elsewhere = test::onSameVolume("/dev/shm", tree.root()) ? tree / "dest" : fs::path("/dev/shm");
    TempTree destination(elsewhere);

    for (const std::string item : {"work/a/..", "work/a/.", "work/a/b/../", "work/a/./"}) {
        SCOPED_TRACE(item);
        CancellationToken token;
        OperationProgressTracker progress;
        const Trash trash(tree / "data/Trash", ::getuid());
        const auto trashed = TrashOperation::run({tree / item}, token, progress, trash);
        EXPECT_TRUE(trashed.completed.empty());
        ASSERT_EQ(trashed.failures.size(), 1u);
        isInvalidName(trashed.failures[0]);

        for (const auto kind : {TransferEngine::Kind::copy, TransferEngine::Kind::move}) {
            const auto report = test::transfer(kind, {tree / item}, destination.root());
            EXPECT_TRUE(report.completed.empty());
            ASSERT_EQ(report.failures.size(), 1u);
            isInvalidName(report.failures[0]);
        }
        const auto renamed = ItemActions::rename(tree / item, "x");
        ASSERT_FALSE(renamed);
        EXPECT_EQ(renamed.error().kind(), FileOperationError::Kind::invalidName);

        EXPECT_TRUE(fs::is_empty(destination.root()));
        EXPECT_FALSE(tree.exists("data/Trash/files/work")) << "nothing went to the Trash";
    }
    auto after = test::entriesBelow(tree.root());
    std::erase_if(after, [](const std::string& entry) { return entry.starts_with("data"); });
    EXPECT_EQ(after, before);
}

} // namespace
} // namespace orbisk
