#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "operations/FileOperationError.h"
#include "operations/ItemStamp.h"
#include "operations/TrashOperation.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

TEST(TrashOperation, TrashesInOrderAndGoesOnPastFailures)
{
    TempTree tree;
    const Trash trash(tree / "data/Trash", ::getuid());
    const std::vector<fs::path> items = {tree.file("one", "1"), tree / "gone", tree.folder("two"),
                                         tree.link("three", "/nowhere")};
    CancellationToken token;
    OperationProgressTracker progress;

    const auto report = TrashOperation::run(items, token, progress, trash);

    ASSERT_EQ(report.completed.size(), 3U);
    ASSERT_EQ(report.undoChanges.size(), 3U);
    const std::vector<fs::path> done = {items[0], items[2], items[3]};
    for (std::size_t i = 0; i < done.size(); ++i) {
        SCOPED_TRACE(done[i]);
        EXPECT_EQ(report.completed[i].source, done[i]);
        EXPECT_EQ(report.completed[i].destination, tree / "data/Trash/files" / done[i].filename());
        EXPECT_FALSE(fs::exists(fs::symlink_status(done[i])));
        EXPECT_TRUE(fs::exists(fs::symlink_status(report.completed[i].destination)));
        EXPECT_EQ(report.undoChanges[i], UndoChange::trashed(done[i], report.completed[i].destination,
                                                             ItemStamp::of(report.completed[i].destination)));
    }
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].url, items[1]);
    EXPECT_EQ(report.failures[0].message(),
              "“gone” no longer exists. It may have been moved or deleted by another application.");
    EXPECT_FALSE(report.cancelled);
    EXPECT_FALSE(report.isCompleteSuccess());

    const auto last = progress.snapshot();
    EXPECT_EQ(last.phase, OperationProgress::Phase::finished);
    EXPECT_EQ(last.completedItems, 4);
    EXPECT_EQ(last.totalItems, 4);
    EXPECT_EQ(last.currentPath, items[3].native());
}

TEST(TrashOperation, ACancelledRunLeavesTheRestAlone)
{
    TempTree tree;
    const Trash trash(tree / "data/Trash", ::getuid());
    const std::vector<fs::path> items = {tree.file("a"), tree.file("b")};
    CancellationToken token;
    token.cancel();
    OperationProgressTracker progress;

    const auto report = TrashOperation::run(items, token, progress, trash);

    EXPECT_TRUE(report.cancelled);
    EXPECT_TRUE(report.completed.empty());
    EXPECT_TRUE(report.failures.empty());
    EXPECT_TRUE(tree.exists("a") && tree.exists("b"));
    EXPECT_EQ(progress.snapshot().phase, OperationProgress::Phase::finished);
}

TEST(TrashOperation, APermissionFailureIsASystemErrorThatAsksForPermission)
{
    TempTree tree;
    ::chmod(tree.root().c_str(), 0777);
    tree.file("locked/item", "keep");
    ::chmod((tree / "locked").c_str(), 0755);
    const auto outcome = test::runUnprivileged([&]() -> std::string {
        CancellationToken token;
        OperationProgressTracker progress;
        const Trash trash(tree / "data/Trash", ::getuid());
        const auto report = TrashOperation::run({tree / "locked/item"}, token, progress, trash);
        if (report.failures.size() != 1)
            return "no failure";
        return report.failures[0].message() + (report.failures[0].error.isPermissionDenied() ? " [denied]" : "");
    });
    if (!outcome)
        GTEST_SKIP() << outcome.error();
    EXPECT_EQ(*outcome, "Couldn’t move “item”: Permission denied. [denied]");
    EXPECT_EQ(tree.read("locked/item"), "keep");
    EXPECT_TRUE(fs::is_empty(tree / "data/Trash/info"));
}

} // namespace
} // namespace orbisk
