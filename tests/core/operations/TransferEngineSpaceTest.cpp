// The free-space check counts what a copy will really write.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TransferTestSupport.h"
#include "operations/TransferEngine.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::entriesBelow;
using test::SmallTmpfs;
using test::TempTree;
using test::transfer;

// A file of `size` bytes whose only data is a few bytes in the middle.
void makeSparse(const fs::path& path, off_t size)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, size), 0);
    ASSERT_EQ(::pwrite(fd, "data", 4, size / 2), 4);
    ::close(fd);
}

TEST(TransferEngineSpace, ASparseImageFitsByTheBlocksItHolds)
{
    TempTree tree;
    SmallTmpfs volume(tree / "small", "8m");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    tree.folder("src");
    makeSparse(tree / "src/disk.img", off_t{4} << 30);
    tree.file("src/notes.txt", "notes");

    const auto report = transfer(TransferEngine::Kind::copy, {tree / "src"}, tree / "small");

    EXPECT_TRUE(report.isCompleteSuccess()) << report.abortReason.value_or("");
    struct stat copied {};
    ASSERT_EQ(::stat((tree / "small/src/disk.img").c_str(), &copied), 0);
    EXPECT_EQ(copied.st_size, off_t{4} << 30);
    EXPECT_LT(copied.st_blocks * 512, 1 << 20);
    ASSERT_EQ(report.undoChanges.size(), 1U);
    EXPECT_TRUE(std::holds_alternative<UndoChange::Created>(report.undoChanges[0].change));
}

TEST(TransferEngineSpace, ResumingACopyCountsOnlyWhatIsStillMissing)
{
    TempTree tree;
    SmallTmpfs volume(tree / "small", "4m");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    const std::string first(1'500'000, 'a');
    const std::string second(1'500'000, 'b');
    tree.file("src/F/a.bin", first);
    tree.file("src/F/b.bin", second);
    tree.file("small/F/a.bin", first); // what an interrupted copy got done

    // Whole, the folder would not fit beside what is there: that is still refused.
    const auto whole = transfer(TransferEngine::Kind::copy, {tree / "src/F"}, tree / "small",
                                [](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                                    engine.conflictPolicy = ConflictChoice::keepBoth;
                                });
    ASSERT_TRUE(whole.abortReason.has_value());
    EXPECT_TRUE(whole.abortReason->starts_with("Not enough free space on the destination volume: 3.0 MB needed,"))
        << *whole.abortReason;
    EXPECT_EQ(entriesBelow(tree / "small"), (std::vector<std::string>{"F", "F/a.bin"}));

    // Merging and skipping what is there writes only the missing file.
    const auto resumed = transfer(TransferEngine::Kind::copy, {tree / "src/F"}, tree / "small",
                                  [](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                                      engine.mergeFolders = true;
                                      engine.conflictPolicy = ConflictChoice::skip;
                                  });
    EXPECT_TRUE(resumed.isCompleteSuccess()) << resumed.abortReason.value_or("");
    EXPECT_EQ(tree.read("small/F/b.bin"), second);
    EXPECT_EQ(resumed.skipped, (std::vector<fs::path>{tree / "src/F/a.bin"}));
    ASSERT_EQ(resumed.undoChanges.size(), 1U);
    const auto* created = std::get_if<UndoChange::Created>(&resumed.undoChanges[0].change);
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->at, tree / "small/F/b.bin");
}

} // namespace
} // namespace orbisk
