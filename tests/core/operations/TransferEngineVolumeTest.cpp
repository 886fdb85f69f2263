#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <thread>

#include "TransferTestSupport.h"
#include "operations/TransferEngine.h"
#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::entriesBelow;
using test::SmallTmpfs;
using test::TempTree;
using test::transfer;

TEST(TransferEngineVolumes, AFullVolumeStopsTheRunAndLeavesNoPartialCopy)
{
    TempTree tree;
    SmallTmpfs volume(tree / "small", "2m");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    tree.file("src/first.txt", "1");
    tree.file("src/big.bin", std::string(1'500'000, 'b'));
    tree.file("src/later.txt", "3");
    tree.file("small/first.txt", "clash");

    // The free-space check passes; the clash question then fills the volume, as another program
    // could, so that the big file meets a full disk halfway.
    const auto report =
        transfer(TransferEngine::Kind::copy, {tree / "src/first.txt", tree / "src/big.bin", tree / "src/later.txt"},
                 tree / "small", [&](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                     engine.conflictHandler = [&](const NameConflict&) {
                         tree.file("small/filler", std::string(1'000'000, 'f'));
                         return ConflictDecision{ConflictChoice::keepBoth, false};
                     };
                 });

    ASSERT_TRUE(report.abortReason.has_value());
    EXPECT_EQ(*report.abortReason,
              "The destination volume is full (No space left on device). Remaining items were not processed.");
    EXPECT_EQ(entriesBelow(tree / "small"), (std::vector<std::string>{"filler", "first 2.txt", "first.txt"}));
    EXPECT_EQ(entriesBelow(tree / "src"), (std::vector<std::string>{"big.bin", "first.txt", "later.txt"}));
    EXPECT_EQ(report.completed.size(), 1U);
}

TEST(TransferEngineVolumes, TheFreeSpaceCheckRefusesBeforeTouchingAnything)
{
    TempTree tree;
    SmallTmpfs volume(tree / "small", "1m");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    tree.file("src/F/a.bin", std::string(700'000, 'a'));
    tree.file("src/F/b.bin", std::string(700'000, 'b'));
    const auto report = transfer(TransferEngine::Kind::move, {tree / "src/F"}, tree / "small");
    ASSERT_TRUE(report.abortReason.has_value());
    EXPECT_TRUE(report.abortReason->starts_with("Not enough free space on the destination volume: 1.4 MB needed,"))
        << *report.abortReason;
    EXPECT_TRUE(entriesBelow(tree / "small").empty());
    EXPECT_EQ(entriesBelow(tree / "src/F"), (std::vector<std::string>{"a.bin", "b.bin"}));
}

TEST(TransferEngineVolumes, AMoveToAnotherVolumeLeavesWhatChangedMeanwhile)
{
    TempTree tree;
    TempTree other("/dev/shm");
    if (test::onSameVolume(tree.root(), other.root()))
        GTEST_SKIP() << "/dev/shm is on the same volume as the temporary folder";

    for (const char* name : {"appended", "touched", "replaced", "kept/same", "kept/deep/same"})
        tree.file(std::string("project/") + name, name);
    tree.file("loose.txt", "loose");
    int calls = 0;
    const auto report = transfer(TransferEngine::Kind::move, {tree / "project", tree / "loose.txt"}, other.root(),
                                 [&](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                                     engine.beforeSourceRemoval = [&] {
                                         ++calls;
                                         std::ofstream(tree / "project/appended", std::ios::app) << " more";
                                         tree.setModificationTime("project/touched", 1'700'000'000, 1);
                                         tree.file("project/replaced.new", "new");
                                         fs::rename(tree / "project/replaced.new", tree / "project/replaced");
                                         tree.file("project/kept/deep/added", "added");
                                     };
                                 });

    EXPECT_EQ(calls, 1);
    // The copies are complete, as the sources were when they were copied.
    EXPECT_EQ(entriesBelow(other / "project"),
              (std::vector<std::string>{"appended", "kept", "kept/deep", "kept/deep/same", "kept/same", "replaced",
                                        "touched"}));
    EXPECT_EQ(other.read("project/appended"), "appended");
    EXPECT_EQ(other.read("loose.txt"), "loose");
    // Only what provably did not change went, with the folders that had to stay.
    EXPECT_EQ(entriesBelow(tree / "project"),
              (std::vector<std::string>{"appended", "kept", "kept/deep", "kept/deep/added", "replaced", "touched"}));
    EXPECT_FALSE(tree.exists("loose.txt"));
    ASSERT_EQ(report.failures.size(), 1U);
    const std::string message = report.failures[0].message();
    EXPECT_TRUE(message.starts_with("“project” was copied, but the original could not be removed: 4 items were "
                                    "added, changed or could not be removed during the move and were left in place ("))
        << message;
    for (const char* name : {"appended", "touched", "replaced", "added"})
        EXPECT_NE(message.find(name), std::string::npos) << name;
}

TEST(TransferEngineVolumes, CancellingInsideALargeFileRemovesThePartialCopy)
{
    TempTree tree;
    TempTree other("/dev/shm");
    tree.file("src/large.bin", std::string(64 << 20, 'x'));
    for (const auto kind : {TransferEngine::Kind::copy, TransferEngine::Kind::move}) {
        SCOPED_TRACE(kind == TransferEngine::Kind::copy ? "copy" : "move");
        std::atomic<bool> done = false;
        std::jthread canceller;
        const auto report =
            transfer(kind, {tree / "src/large.bin"}, other.root(),
                     [&](TransferEngine& engine, CancellationToken& token, OperationProgressTracker& progress) {
                         engine.copyOptions.chunkBytes = 64 << 10;
                         engine.copyOptions.largestChunkBytes = 64 << 10;
                         engine.copyOptions.firstMethod = CopyMethod::copyFileRange;
                         canceller = std::jthread([&token, &progress, &done] {
                             while (!done && progress.snapshot().completedBytes == 0)
                                 std::this_thread::yield();
                             token.cancel();
                         });
                     });
        done = true;
        EXPECT_TRUE(report.cancelled);
        EXPECT_TRUE(report.completed.empty());
        EXPECT_TRUE(entriesBelow(other.root()).empty());
        EXPECT_EQ(fs::file_size(tree / "src/large.bin"), 64U << 20);
    }
}

TEST(TransferEngineVolumes, MetadataSparseFilesLinksAndSpecialFilesThroughACopy)
{
    TempTree tree;
    const fs::path file = tree.file("src/F/data.txt", "data");
    ::chmod(file.c_str(), 0640);
    tree.setModificationTime("src/F/data.txt", 1'600'000'000, 123'456'789);
    const bool haveXattr = ::lsetxattr(file.c_str(), "user.note", "hello", 5, 0) == 0;
    {
        std::ofstream sparse(tree / "src/F/sparse.bin", std::ios::binary);
        sparse.seekp((16 << 20) - 1);
        sparse.put('z');
    }
    tree.link("src/F/link", "data.txt");
    tree.fifo("src/F/pipe");
    ::chmod((tree / "src/F").c_str(), 0751);

    CancellationToken token;
    OperationProgressTracker progress;
    TransferEngine engine(TransferEngine::Kind::copy, {tree / "src/F"}, tree.folder("dst"), token, progress);
    const auto report = engine.run();

    const auto counted = progress.snapshot();
    EXPECT_EQ(counted.totalItems, 5);
    EXPECT_EQ(counted.completedItems, 5);
    EXPECT_EQ(counted.totalBytes, 4 + (16 << 20));
    EXPECT_EQ(counted.completedBytes, counted.totalBytes);
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].message(), "“pipe” is a special file (device, socket or pipe) and was not copied.");
    struct stat copy {};
    ASSERT_EQ(::lstat((tree / "dst/F/data.txt").c_str(), &copy), 0);
    EXPECT_EQ(copy.st_mode & 07777, 0640U);
    EXPECT_EQ(copy.st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(copy.st_mtim.tv_nsec, 123'456'789);
    if (haveXattr) {
        char value[16] = {};
        EXPECT_EQ(::lgetxattr((tree / "dst/F/data.txt").c_str(), "user.note", value, sizeof value), 5);
        EXPECT_STREQ(value, "hello");
    }
    ASSERT_EQ(::lstat((tree / "dst/F/sparse.bin").c_str(), &copy), 0);
    EXPECT_EQ(copy.st_size, 16 << 20);
    EXPECT_LT(copy.st_blocks * 512, 1 << 20);
    EXPECT_TRUE(fs::is_symlink(tree / "dst/F/link"));
    EXPECT_EQ(fs::read_symlink(tree / "dst/F/link"), "data.txt");
    EXPECT_FALSE(fs::exists(fs::symlink_status(tree / "dst/F/pipe")));
    ASSERT_EQ(::lstat((tree / "dst/F").c_str(), &copy), 0);
    EXPECT_EQ(copy.st_mode & 07777, 0751U);
}

// Whether every extent of a file is shared with another file (a clone, not a copy).
bool allExtentsShared(const fs::path& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return false;
    alignas(fiemap) char buffer[sizeof(fiemap) + 32 * sizeof(fiemap_extent)] = {};
    auto* map = reinterpret_cast<fiemap*>(buffer);
    map->fm_length = FIEMAP_MAX_OFFSET;
    map->fm_flags = FIEMAP_FLAG_SYNC;
    map->fm_extent_count = 32;
    const bool read = ::ioctl(fd, FS_IOC_FIEMAP, map) == 0;
    ::close(fd);
    if (!read || map->fm_mapped_extents == 0)
        return false;
    for (unsigned i = 0; i < map->fm_mapped_extents; ++i)
        if (!(map->fm_extents[i].fe_flags & FIEMAP_EXTENT_SHARED))
            return false;
    return true;
}

TEST(TransferEngineVolumes, ACopyOnBtrfsIsAClone)
{
    if (!test::haveProgram("mkfs.btrfs"))
        GTEST_SKIP() << "mkfs.btrfs is not installed (scripts/setup installs btrfs-progs)";
    TempTree tree;
    const fs::path image = tree / "btrfs.img";
    fs::resize_file(tree.file("btrfs.img"), 128 << 20);
    if (test::run({"mkfs.btrfs", "-q", image.native()}).exitCode != 0)
        GTEST_SKIP() << "mkfs.btrfs failed";
    const fs::path mountPoint = tree.folder("mnt");
    if (test::run({"mount", "-o", "loop", image.native(), mountPoint.native()}).exitCode != 0)
        GTEST_SKIP() << "cannot loop-mount a btrfs image here (needs root and loop devices)";
    tree.file("mnt/src/data.bin", std::string(1 << 20, 'q'));
    fs::create_directory(mountPoint / "dst");
    const auto report = transfer(TransferEngine::Kind::copy, {mountPoint / "src/data.bin"}, mountPoint / "dst");
    const bool shared = allExtentsShared(mountPoint / "dst/data.bin");
    const std::string contents = tree.read("mnt/dst/data.bin");
    test::run({"umount", mountPoint.native()});
    EXPECT_TRUE(report.isCompleteSuccess());
    EXPECT_EQ(contents.size(), 1U << 20);
    EXPECT_TRUE(shared);
}

} // namespace
} // namespace orbisk
