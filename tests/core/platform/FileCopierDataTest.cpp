#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include "CopyTestSupport.h"
#include "platform/FileCopier.h"
#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

constexpr std::int64_t smallChunk = 64 * 1024;

const std::vector<std::pair<CopyMethod, const char*>> methods = {{CopyMethod::clone, "clone"},
                                                                 {CopyMethod::copyFileRange, "copy_file_range"},
                                                                 {CopyMethod::readWrite, "read-write"}};

CopyOptions startingWith(CopyMethod method)
{
    return {.chunkBytes = smallChunk, .firstMethod = method};
}

TEST(FileCopierData, EveryMethodCopiesEveryByteAndReportsProgressUpToTheSize)
{
    const std::vector<std::pair<std::size_t, const char*>> sizes = {
        {0, "empty"}, {1, "one byte"}, {smallChunk, "exactly one chunk"}, {5 * smallChunk + 123, "several chunks"}};
    for (const auto& [method, methodName] : methods) {
        for (const auto& [size, sizeName] : sizes) {
            SCOPED_TRACE(std::string(methodName) + ", " + sizeName);
            TempTree tree;
            const std::string contents = test::randomBytes(size, static_cast<unsigned>(size));
            tree.file("source", contents);
            std::vector<std::int64_t> reports;
            auto progress = [&reports](std::int64_t done) {
                reports.push_back(done);
                return CopyControl::proceed;
            };
            auto result = FileCopier::copyFile(tree / "source", tree / "copy", progress, startingWith(method));
            ASSERT_TRUE(result) << test::describe(result.error());
            EXPECT_EQ(*result, CopyOutcome::copied);
            EXPECT_TRUE(test::readAll(tree / "copy") == contents) << "the copy differs";
            ASSERT_FALSE(reports.empty());
            EXPECT_TRUE(std::ranges::is_sorted(reports));
            EXPECT_EQ(reports.back(), static_cast<std::int64_t>(size));
            EXPECT_EQ(test::namesIn(tree.root()), (std::vector<std::string>{"copy", "source"}));
        }
    }
}

TEST(FileCopierData, AFileBiggerThanTheDefaultChunkIsCopiedWhole)
{
    TempTree tree;
    const std::string contents = test::randomBytes((std::size_t{8} << 20) + 4097);
    tree.file("big", contents);
    auto result = FileCopier::copyFile(tree / "big", tree / "copy");
    ASSERT_TRUE(result) << test::describe(result.error());
    EXPECT_TRUE(test::readAll(tree / "copy") == contents) << "the copy differs";
}

// Data at the start, in the middle and nowhere at the end: each method must leave the holes
// unallocated, including the trailing one, and still give the same bytes and size.
void makeSparse(const fs::path& path)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    ASSERT_GE(fd, 0);
    const std::string block = test::randomBytes(64 * 1024);
    ASSERT_EQ(::pwrite(fd, block.data(), block.size(), 0), static_cast<ssize_t>(block.size()));
    ASSERT_EQ(::pwrite(fd, block.data(), block.size(), 8 << 20), static_cast<ssize_t>(block.size()));
    ASSERT_EQ(::ftruncate(fd, 16 << 20), 0);
    ::close(fd);
}

TEST(FileCopierData, HolesStayHolesWithEveryMethodAndAcrossVolumes)
{
    TempTree tree;
    TempTree shm("/dev/shm");
    makeSparse(tree / "sparse");
    const auto source = test::statusOf(tree / "sparse");
    ASSERT_LT(source.st_blocks * 512, 1 << 20) << "this file system does not keep holes";
    for (const auto& [method, name] : methods) {
        for (const fs::path& folder : {tree.root(), shm.root()}) {
            SCOPED_TRACE(std::string(name) + " into " + folder.native());
            const fs::path copy = folder / ("copy " + std::string(name));
            auto result = FileCopier::copyFile(tree / "sparse", copy, {}, startingWith(method));
            ASSERT_TRUE(result) << test::describe(result.error());
            const auto copied = test::statusOf(copy);
            EXPECT_EQ(copied.st_size, source.st_size);
            EXPECT_LT(copied.st_blocks * 512, 1 << 20) << "holes were filled: " << copied.st_blocks << " blocks";
            EXPECT_TRUE(test::readAll(copy) == test::readAll(tree / "sparse"));
        }
    }
}

// /proc files report size 0 and /sys files 4096 whatever they hold: both are copied as they read.
TEST(FileCopierData, VirtualFilesAreCopiedAsTheyRead)
{
    TempTree tree;
    for (const char* virtualFile : {"/proc/version", "/proc/sys/kernel/osrelease", "/sys/devices/system/cpu/online"}) {
        SCOPED_TRACE(virtualFile);
        const fs::path copy = tree.root() / fs::path(virtualFile).filename();
        auto result = FileCopier::copyFile(virtualFile, copy);
        ASSERT_TRUE(result) << test::describe(result.error());
        EXPECT_FALSE(test::readAll(copy).empty());
        EXPECT_EQ(test::readAll(copy), test::readAll(virtualFile));
    }
}

TEST(FileCopierData, CopiesBetweenVolumesBothWays)
{
    TempTree tree;
    TempTree shm("/dev/shm");
    const std::string contents = test::randomBytes(3 * smallChunk + 5);
    tree.file("here", contents);
    for (const auto& [method, name] : methods) {
        SCOPED_TRACE(name);
        const std::string copyName = std::string("there ") + name;
        auto out = FileCopier::copyFile(tree / "here", shm / copyName, {}, startingWith(method));
        ASSERT_TRUE(out) << test::describe(out.error());
        auto back =
            FileCopier::copyFile(shm / copyName, tree / ("back " + std::string(name)), {}, startingWith(method));
        ASSERT_TRUE(back) << test::describe(back.error());
        EXPECT_EQ(tree.read("back " + std::string(name)), contents);
    }
}

// The chunk grows for speed, but never past its limit: a large file keeps reporting progress
// (and checking for a stop) at least every largestChunkBytes, whichever method moves the data.
TEST(FileCopierData, ChunksGrowOnlyUpToTheirLimit)
{
    constexpr std::int64_t limit = 4 * smallChunk;
    const std::string contents = test::randomBytes(64 * smallChunk + 7);
    for (const auto& [method, name] : methods) {
        SCOPED_TRACE(name);
        TempTree tree;
        tree.file("source", contents);
        std::vector<std::int64_t> reports;
        auto progress = [&reports](std::int64_t done) {
            reports.push_back(done);
            return CopyControl::proceed;
        };
        CopyOptions options = startingWith(method);
        options.largestChunkBytes = limit;
        auto result = FileCopier::copyFile(tree / "source", tree / "copy", progress, options);
        ASSERT_TRUE(result) << test::describe(result.error());
        EXPECT_TRUE(test::readAll(tree / "copy") == contents) << "the copy differs";
        if (reports.size() == 2 && reports.back() == static_cast<std::int64_t>(contents.size()))
            continue; // cloned in one step: there is no chunk to grow
        for (std::size_t at = 1; at < reports.size(); ++at)
            EXPECT_LE(reports[at] - reports[at - 1], limit) << "between reports " << at - 1 << " and " << at;
    }
}

// Between the same two places a copy may report the method to start the next one with. It must
// never skip back to a faster method, must rule out cloning between different file systems, and
// must still copy every byte when used.
TEST(FileCopierData, ALearnedMethodStillCopiesBetweenTheSamePlaces)
{
    TempTree tree;
    TempTree shm("/dev/shm");
    const std::string contents = test::randomBytes(3 * smallChunk + 5);
    tree.file("here", contents);
    shm.file("there", contents);
    struct Case {
        fs::path from;
        fs::path into;
        bool crossesFileSystems;
        const char* name;
    };
    const std::vector<Case> cases = {{tree / "here", tree.root(), false, "within /tmp"},
                                     {shm / "there", shm.root(), false, "within /dev/shm"},
                                     {tree / "here", shm.root(), true, "/tmp to /dev/shm"},
                                     {shm / "there", tree.root(), true, "/dev/shm to /tmp"}};
    int copyNumber = 0;
    for (const auto& place : cases) {
        for (const auto& [method, methodName] : methods) {
            SCOPED_TRACE(std::string(place.name) + ", starting with " + methodName);
            CopyMethod learned = method;
            CopyOptions options = startingWith(method);
            options.learnedMethod = &learned;
            const fs::path first = place.into / ("first " + std::to_string(++copyNumber));
            auto result = FileCopier::copyFile(place.from, first, {}, options);
            ASSERT_TRUE(result) << test::describe(result.error());
            EXPECT_GE(learned, method);
            if (place.crossesFileSystems) {
                EXPECT_NE(learned, CopyMethod::clone);
            }

            const fs::path second = place.into / ("second " + std::to_string(copyNumber));
            auto again = FileCopier::copyFile(place.from, second, {}, startingWith(learned));
            ASSERT_TRUE(again) << test::describe(again.error());
            EXPECT_TRUE(test::readAll(second) == contents) << "the copy differs";
        }
    }
}

// A full destination volume: the write fails with ENOSPC, which must come back recognisable
// (the caller stops the whole run), and neither the copy nor its temporary entry may remain.
TEST(FileCopierData, AFullVolumeIsReportedAsSuchAndLeavesNothing)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "mounting a small tmpfs needs root";
    TempTree tree;
    const fs::path small = tree.folder("small");
    if (test::run({"mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", small.native()}).exitCode != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here";
    struct Unmount {
        fs::path at;
        ~Unmount() { (void)test::run({"umount", at.native()}); }
    } unmount{small};

    tree.file("large", test::randomBytes(4 << 20));
    for (const auto& [method, name] : methods) {
        SCOPED_TRACE(name);
        auto result = FileCopier::copyFile(tree / "large", small / "large", {}, startingWith(method));
        ASSERT_FALSE(result);
        EXPECT_TRUE(result.error().isVolumeFull()) << test::describe(result.error());
        EXPECT_EQ(result.error().step, CopyStep::writeDestination);
        EXPECT_TRUE(test::namesIn(small).empty());
    }
}

} // namespace
} // namespace orbisk
