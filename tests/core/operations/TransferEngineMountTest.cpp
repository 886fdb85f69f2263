// Mount points and bind mounts met by copies, moves and the Trash.
#include <gtest/gtest.h>

#include <unistd.h>

#include "TransferTestSupport.h"
#include "operations/TransferEngine.h"
#include "operations/TrashOperation.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::BindMount;
using test::entriesBelow;
using test::SmallTmpfs;
using test::TempTree;
using test::transfer;
using Kind = TransferEngine::Kind;

std::optional<FileOperationError::Kind> kindOf(const ItemFailure& failure)
{
    const auto* error = failure.error.as<FileOperationError>();
    return error ? std::optional(error->kind()) : std::nullopt;
}

std::string kindName(Kind kind)
{
    return kind == Kind::copy ? "copy" : "move";
}

TEST(TransferEngineMounts, ADestinationInsideTheSourceThroughABindMountIsRefusedForCopyAndMove)
{
    for (const Kind kind : {Kind::copy, Kind::move}) {
        SCOPED_TRACE(kindName(kind));
        TempTree tree;
        tree.file("src/sub/a.txt", "a");
        tree.file("src/b.txt", "b");
        tree.folder("view");
        BindMount bind(tree / "src/sub", tree / "view");
        if (!bind.mounted())
            GTEST_SKIP() << "cannot bind-mount here (needs root)";

        const auto report = transfer(kind, {tree / "src"}, tree / "view");

        ASSERT_EQ(report.failures.size(), 1U);
        EXPECT_EQ(kindOf(report.failures[0]), FileOperationError::Kind::destinationInsideSource);
        EXPECT_TRUE(report.completed.empty());
        EXPECT_TRUE(report.undoChanges.empty());
        EXPECT_EQ(entriesBelow(tree / "src"), (std::vector<std::string>{"b.txt", "sub", "sub/a.txt"}));
    }
}

TEST(TransferEngineMounts, AMergeIntoAFolderThatIsTheSourceSeenThroughABindMountStops)
{
    // The destination itself is outside the source, but the clashing folder there is the source's
    // own subfolder: merging into it would copy the source into itself.
    TempTree tree;
    tree.file("src/inner/x.txt", "x");
    tree.folder("dst/src");
    BindMount bind(tree / "src/inner", tree / "dst/src");
    if (!bind.mounted())
        GTEST_SKIP() << "cannot bind-mount here (needs root)";

    const auto report = transfer(Kind::copy, {tree / "src"}, tree / "dst",
                                 [](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                                     engine.mergeFolders = true;
                                     engine.conflictPolicy = ConflictChoice::skip;
                                 });

    ASSERT_FALSE(report.failures.empty());
    EXPECT_EQ(kindOf(report.failures[0]), FileOperationError::Kind::destinationInsideSource)
        << report.failures[0].message();
    // Nothing nested: the source holds what it held, and whatever the merge made is gone again.
    EXPECT_EQ(entriesBelow(tree / "src"), (std::vector<std::string>{"inner", "inner/x.txt"}));
}

struct MountedTree {
    TempTree tree;
    SmallTmpfs volume{tree / "src/mnt", "4m"};

    MountedTree()
    {
        if (!volume.mounted())
            return;
        tree.file("src/keep.txt", "keep");
        tree.file("src/mnt/data.txt", "data");
        tree.file("src/mnt/deep/more.txt", "more");
    }
    [[nodiscard]] std::vector<std::string> sourceEntries() const { return entriesBelow(tree / "src"); }
    static std::vector<std::string> allEntries()
    {
        return {"keep.txt", "mnt", "mnt/data.txt", "mnt/deep", "mnt/deep/more.txt"};
    }
};

TEST(TransferEngineMounts, AMoveOfOrAcrossAMountPointIsRefusedBeforeAnythingIsTouched)
{
    MountedTree mounted;
    if (!mounted.volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    TempTree other("/dev/shm");
    TempTree& tree = mounted.tree;

    struct Row {
        fs::path source;
        fs::path destination;
        std::string message;
    };
    const std::vector<Row> table = {
        // To another volume: the mounted files would be copied and then deleted from their volume.
        {tree / "src", other.root(),
         "“src” holds another volume, mounted at " + (tree / "src/mnt").native() +
             ", so it can’t be moved. Nothing was changed."},
        // The mount point itself, within its parent's volume or not.
        {tree / "src/mnt", tree.root(),
         "“mnt” is where another volume is mounted, so it can’t be moved. Nothing was changed."},
        {tree / "src/mnt", other.root(),
         "“mnt” is where another volume is mounted, so it can’t be moved. Nothing was changed."},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.source.native() + " → " + row.destination.native());
        const auto report = transfer(Kind::move, {row.source}, row.destination);
        ASSERT_EQ(report.failures.size(), 1U);
        EXPECT_EQ(kindOf(report.failures[0]), FileOperationError::Kind::mountBoundary);
        EXPECT_EQ(report.failures[0].message(), row.message);
        EXPECT_TRUE(report.completed.empty());
        EXPECT_TRUE(report.undoChanges.empty());
        EXPECT_EQ(mounted.sourceEntries(), MountedTree::allEntries());
        EXPECT_TRUE(entriesBelow(other.root()).empty());
    }

    // Within one volume a rename carries the mounted volume along untouched, so that is allowed.
    const auto renamed = transfer(Kind::move, {tree / "src"}, tree.folder("within"));
    EXPECT_TRUE(renamed.isCompleteSuccess());
    EXPECT_EQ(entriesBelow(tree / "within/src"), MountedTree::allEntries());
    ASSERT_EQ(renamed.undoChanges.size(), 1U);
    EXPECT_TRUE(std::holds_alternative<UndoChange::Moved>(renamed.undoChanges[0].change));
    ASSERT_EQ(::rename((tree / "within/src").c_str(), (tree / "src").c_str()), 0); // for the unmount
}

TEST(TransferEngineMounts, ACopyLeavesTheMountedVolumeOutAndSaysSo)
{
    MountedTree mounted;
    if (!mounted.volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    TempTree& tree = mounted.tree;
    TempTree other("/dev/shm");

    const auto report = transfer(Kind::copy, {tree / "src"}, other.root());

    EXPECT_EQ(entriesBelow(other.root()), (std::vector<std::string>{"src", "src/keep.txt"}));
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].url, tree / "src/mnt");
    EXPECT_EQ(report.failures[0].message(), "“mnt” is where another volume is mounted; its contents were not copied.");
    ASSERT_EQ(report.completed.size(), 1U);
    ASSERT_EQ(report.undoChanges.size(), 1U);
    const auto* created = std::get_if<UndoChange::Created>(&report.undoChanges[0].change);
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->at, other.root() / "src");
    EXPECT_EQ(mounted.sourceEntries(), MountedTree::allEntries());

    // The mounted volume on its own is an ordinary copy of what is on it.
    const auto whole = transfer(Kind::copy, {tree / "src/mnt"}, other.root());
    EXPECT_TRUE(whole.isCompleteSuccess());
    EXPECT_EQ(entriesBelow(other.root() / "mnt"), (std::vector<std::string>{"data.txt", "deep", "deep/more.txt"}));
}

TEST(TransferEngineMounts, TheTrashRefusesAMountPointWithoutMakingATrashOnTheMountedVolume)
{
    MountedTree mounted;
    if (!mounted.volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    TempTree& tree = mounted.tree;
    const Trash trash(tree / "data/Trash", ::getuid());
    CancellationToken token;
    OperationProgressTracker progress;

    const auto report = TrashOperation::run({tree / "src/mnt", tree / "src"}, token, progress, trash);

    ASSERT_EQ(report.failures.size(), 2U);
    EXPECT_EQ(report.failures[0].message(),
              "“mnt” is where another volume is mounted, so it can’t be moved to the Trash. Nothing was changed.");
    EXPECT_EQ(report.failures[1].message(), "“src” holds another volume, mounted at " + (tree / "src/mnt").native() +
                                                ", so it can’t be moved to the Trash. Nothing was changed.");
    EXPECT_TRUE(report.completed.empty());
    EXPECT_TRUE(report.undoChanges.empty());
    EXPECT_EQ(mounted.sourceEntries(), MountedTree::allEntries());
}

} // namespace
} // namespace orbisk
