#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "support/Processes.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"
#include "tools/FolderBreakdown.h"
#include "tools/FolderSize.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

/// What find says about the tree, without following links or leaving the volume: regular files
/// counted once per inode, and the folders below the root.
FolderSize::Result oracle(const fs::path& root)
{
    FolderSize::Result result;
    const auto files =
        test::run({"find", root.native(), "-mindepth", "1", "-xdev", "-type", "f", "-printf", "%i %s\n"});
    std::set<std::string> seen;
    std::istringstream lines(files.out);
    for (std::string inode, size; lines >> inode >> size;) {
        if (seen.insert(inode).second) {
            ++result.files;
            result.bytes += std::stoll(size);
        }
    }
    const auto folders = test::run({"find", root.native(), "-mindepth", "1", "-xdev", "-type", "d"});
    result.folders = std::ranges::count(folders.out, '\n');
    return result;
}

/// Files, hard links inside and across folders, links to folders and files, a fifo, hidden and
/// non-UTF-8 names.
void populate(TempTree& tree)
{
    tree.file("top.bin", std::string(1000, 'x'));
    tree.file("docs/a.txt", "hello");
    tree.file("docs/.hidden-note", std::string(300, 'h'));
    tree.file("docs/deep/er/still/caf\xE9.txt", std::string(77, 'c'));
    tree.file("media/big", std::string(50'000, 'b'));
    tree.folder("empty");
    fs::create_hard_link(tree / "media/big", tree / "media/big-again");
    fs::create_hard_link(tree / "media/big", tree / "docs/big-elsewhere");
    fs::create_hard_link(tree / "top.bin", tree / "top-link.bin");
    tree.link("to-media", "media");
    tree.link("to-root", ".");
    tree.link("dangling", "nowhere");
    tree.fifo("docs/pipe");
}

TEST(FolderSize, CountsEachFileAndFolderOnceAsFindDoes)
{
    TempTree tree;
    populate(tree);
    const CancellationToken token;
    const auto result = FolderSize::compute(tree.root(), token);
    auto expected = oracle(tree.root());
    EXPECT_EQ(result, expected);
    EXPECT_EQ(result.bytes, 1000 + 5 + 300 + 77 + 50'000);
    EXPECT_EQ(result.files, 5);
    EXPECT_EQ(result.cloudOnly, 0);

    // The breakdown's totals are the same measurement, split by child.
    const auto report = FolderBreakdown::compute(tree.root(), token);
    EXPECT_TRUE(report.isComplete);
    EXPECT_EQ(report.totalBytes(), result.bytes);
    EXPECT_EQ(report.totalFiles(), result.files);
    EXPECT_EQ(report.totalFolders(), result.folders);
    double shares = 0;
    for (const auto& entry : report.entries) {
        SCOPED_TRACE(entry.name);
        EXPECT_TRUE(entry.isComplete);
        shares += report.share(entry);
        if (entry.name == "to-media" || entry.name == "to-root" || entry.name == "dangling") {
            EXPECT_TRUE(entry.isSymbolicLink);
            EXPECT_FALSE(entry.isDirectory);
            EXPECT_EQ(entry.size, FolderSize::Result{});
        }
        if (entry.name == "docs") {
            EXPECT_TRUE(entry.isDirectory);
            EXPECT_EQ(entry.size.folders, 4); // itself, deep, er and still
        }
    }
    EXPECT_NEAR(shares, 1.0, 1e-9);
}

TEST(FolderSize, AnEmptyFolderMeasuresNothingAndHasNoShares)
{
    TempTree tree;
    const CancellationToken token;
    EXPECT_EQ(FolderSize::compute(tree.root(), token), FolderSize::Result{});
    const auto report = FolderBreakdown::compute(tree.root(), token);
    EXPECT_TRUE(report.isComplete);
    EXPECT_TRUE(report.entries.empty());
    EXPECT_EQ(report.share(FolderBreakdown::Entry{}), 0.0);

    tree.folder("only/empty");
    const auto one = FolderBreakdown::compute(tree.root(), token);
    ASSERT_EQ(one.entries.size(), 1u);
    EXPECT_EQ(one.share(one.entries[0]), 0.0);
    EXPECT_EQ(one.totalFolders(), 2);
}

TEST(FolderSize, AMissingFolderIsUnreadableAndTheBreakdownSaysSo)
{
    TempTree tree;
    const CancellationToken token;
    EXPECT_EQ(FolderSize::compute(tree / "missing", token).unreadable, 1);
    const auto report = FolderBreakdown::compute(tree / "missing", token);
    EXPECT_EQ(report.readError, std::errc::no_such_file_or_directory);
}

/// Makes a chain of depth folders below parent by descriptors, since its path outgrows PATH_MAX.
void makeChain(const fs::path& parent, int depth, const char* name = "level-0123")
{
    fs::create_directories(parent);
    int fd = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(::mkdirat(fd, name, 0755), 0) << std::strerror(errno);
        const int next = ::openat(fd, name, O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
        const int file = ::openat(fd, "f", O_CREAT | O_WRONLY | O_EXCL, 0644);
        ASSERT_EQ(::write(file, "12", 2), 2);
        ::close(file);
    }
    ::close(fd);
}

TEST(FolderSize, WalksTreesDeeperThanThePathLimitWithFewDescriptors)
{
    TempTree tree;
    makeChain(tree / "chain", 450); // some 5,000 bytes of path, and far more folders than descriptors
    // A second branch near the top, read only after the walk comes back up from the deep one.
    makeChain(tree / "chain/level-0123/level-0123", 30, "branch");
    rlimit saved{};
    ::getrlimit(RLIMIT_NOFILE, &saved);
    rlimit small = saved;
    small.rlim_cur = 64;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &small), 0);
    const CancellationToken token;
    const auto result = FolderSize::compute(tree.root(), token);
    ::setrlimit(RLIMIT_NOFILE, &saved);
    EXPECT_EQ(result.folders, 1 + 450 + 30);
    EXPECT_EQ(result.unreadable, 0);
    EXPECT_EQ(result.files, 450 + 30);
    EXPECT_EQ(result.bytes, 2 * (450 + 30));
}

TEST(FolderSize, CancellingStopsTheWalkAndKeepsWhatWasCounted)
{
    TempTree tree;
    for (int i = 0; i < 1500; ++i)
        tree.file("many/" + std::to_string(i), "x");
    tree.folder("other");
    CancellationToken token;
    int calls = 0;
    const auto result = FolderSize::compute(tree.root(), token, [&](const FolderSize::Result&) {
        if (++calls == 1)
            token.cancel();
    });
    EXPECT_GT(result.files, 0);
    EXPECT_LT(result.files, 1500);

    CancellationToken stopLater;
    const auto report = FolderBreakdown::compute(tree.root(), stopLater, [&](const FolderBreakdown::Report& now) {
        if (now.totalFiles() > 400)
            stopLater.cancel();
    });
    EXPECT_FALSE(report.isComplete);
    EXPECT_LT(report.totalFiles(), 1500);
    EXPECT_TRUE(std::ranges::any_of(report.entries, [](const auto& e) { return !e.isComplete; }));
}

TEST(FolderSize, AnUnreadableFolderIsCountedAsUnreadableAndTheRestStillCounts)
{
    TempTree tree;
    tree.file("open/a", "1234");
    tree.file("locked/secret", "zzzzzzzz");
    ASSERT_EQ(::chmod((tree / "locked").c_str(), 0), 0);
    ASSERT_EQ(::chmod(tree.root().c_str(), 0755), 0);
    const auto outcome = test::runUnprivileged([&] {
        const CancellationToken token;
        const auto r = FolderSize::compute(tree.root(), token);
        return std::to_string(r.bytes) + " " + std::to_string(r.files) + " " + std::to_string(r.folders) + " " +
               std::to_string(r.unreadable);
    });
    ::chmod((tree / "locked").c_str(), 0755);
    if (!outcome)
        GTEST_SKIP() << outcome.error();
    EXPECT_EQ(*outcome, "4 1 2 1");
}

/// Mounts and unmounts with the test; skips when the process may not mount.
class Mount {
public:
    Mount(const char* source, const fs::path& target, const char* type, unsigned long flags, const char* data)
        : target_(target)
    {
        mounted_ = ::mount(source, target.c_str(), type, flags, data) == 0;
        error_ = errno;
    }
    ~Mount()
    {
        if (mounted_)
            ::umount2(target_.c_str(), MNT_DETACH);
    }
    [[nodiscard]] bool mounted() const { return mounted_; }
    [[nodiscard]] std::string why() const { return std::strerror(error_); }

private:
    fs::path target_;
    bool mounted_ = false;
    int error_ = 0;
};

TEST(FolderSize, AnotherVolumeInsideIsLeftOutAndMarked)
{
    TempTree tree;
    tree.file("data/a", "12345");
    const auto point = tree.folder("data/volume");
    const Mount tmpfs("tmpfs", point, "tmpfs", 0, "size=4m");
    if (!tmpfs.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs (needs root): " << tmpfs.why();
    std::ofstream(point / "inside") << std::string(100'000, 'v');
    const CancellationToken token;
    const auto result = FolderSize::compute(tree.root(), token);
    EXPECT_EQ(result.bytes, 5);
    EXPECT_EQ(result.folders, 1); // "data"; the mount point belongs to the other volume

    const auto report = FolderBreakdown::compute(tree / "data", token);
    ASSERT_EQ(report.entries.size(), 2u);
    for (const auto& entry : report.entries) {
        EXPECT_EQ(entry.isOtherVolume, entry.name == "volume");
        if (entry.isOtherVolume) {
            EXPECT_EQ(entry.size, FolderSize::Result{});
        }
    }
    EXPECT_EQ(report.foldersToMeasure(), 0);
}

TEST(FolderSize, AFolderReachedTwiceThroughABindMountCountsOnce)
{
    TempTree tree;
    tree.file("real/payload", std::string(4096, 'p'));
    tree.file("real/sub/more", "abc");
    const auto point = tree.folder("elsewhere/view");
    const Mount bind((tree / "real").c_str(), point, nullptr, MS_BIND, nullptr);
    if (!bind.mounted())
        GTEST_SKIP() << "cannot bind-mount (needs root): " << bind.why();
    const CancellationToken token;
    const auto result = FolderSize::compute(tree.root(), token);
    EXPECT_EQ(result.bytes, 4096 + 3);
    EXPECT_EQ(result.files, 2);

    // Whichever child is measured first takes the shared folder; the totals hold it once.
    const auto report = FolderBreakdown::compute(tree.root(), token);
    EXPECT_EQ(report.totalBytes(), 4096 + 3);
}

} // namespace
} // namespace orbisk
