// Copying whole trees of many files, where regular files are copied on several threads.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <sstream>
#include <thread>

#include "TransferTestSupport.h"
#include "operations/FileCopyQueue.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::entriesBelow;
using test::SmallTmpfs;
using test::TempTree;
using test::transfer;

// "f007.txt" for 7.
std::string fileName(int number)
{
    char name[16];
    std::snprintf(name, sizeof name, "f%03d.txt", number);
    return name;
}

// Folders of files with distinct contents: "<folder>/f<n>.txt" holds "<folder> <n>".
void makeFiles(TempTree& tree, const std::string& folder, int count)
{
    for (int i = 0; i < count; ++i)
        tree.file(folder + "/" + fileName(i), folder + " " + std::to_string(i));
}

// The regular files below folder in the order a depth-first walk of the listings meets them.
void walk(const fs::path& folder, std::vector<fs::path>& files)
{
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_directory() && !entry.is_symlink())
            walk(entry.path(), files);
        else
            files.push_back(entry.path());
    }
}

TEST(TransferEngineTrees, EveryFileArrivesAndFailuresAreReportedInTheOrderTheWalkMeetsThem)
{
    TempTree tree;
    makeFiles(tree, "src/A", 150);
    makeFiles(tree, "src/A/sub", 80);
    makeFiles(tree, "src/B", 120);
    const std::vector<std::string> unreadable = {"src/A/f010.txt", "src/A/sub/f079.txt", "src/A/f149.txt",
                                                 "src/B/f000.txt"};
    tree.folder("out");
    if (::geteuid() == 0) {
        ASSERT_EQ(::lchown(tree.root().c_str(), test::nobodyId, test::nobodyId), 0);
        for (const auto& entry : fs::recursive_directory_iterator(tree.root()))
            ASSERT_EQ(::lchown(entry.path().c_str(), test::nobodyId, test::nobodyId), 0);
    }
    for (const auto& name : unreadable)
        fs::permissions(tree / name, fs::perms::none);

    // Root reads anything: the run goes as an ordinary user, so that the unreadable files fail.
    const auto run = [&] {
        const auto report = transfer(TransferEngine::Kind::copy, {tree / "src"}, tree / "out");
        std::ostringstream failures;
        for (const auto& failure : report.failures)
            failures << failure.url.native() << '\n';
        return failures.str();
    };
    const auto failures =
        ::geteuid() == 0 ? test::runUnprivileged(run) : std::expected<std::string, std::string>(run());
    ASSERT_TRUE(failures.has_value()) << failures.error();

    std::vector<fs::path> walked;
    walk(tree / "src", walked);
    std::string expected;
    for (const auto& file : walked)
        if (std::ranges::find(unreadable, file.lexically_relative(tree.root()).native()) != unreadable.end())
            expected += file.native() + '\n';
    EXPECT_EQ(*failures, expected);

    auto copied = entriesBelow(tree / "out/src");
    EXPECT_EQ(copied.size(), 3 + 150 + 80 + 120 - unreadable.size()); // three folders
    for (const auto& name : copied) {
        if (name.ends_with(".txt")) {
            ASSERT_EQ(tree.read("out/src/" + name), tree.read("src/" + name)) << name;
        }
    }
}

TEST(TransferEngineTrees, AVolumeFillingUpInsideAFolderRemovesTheWholeFolderCopy)
{
    TempTree tree;
    SmallTmpfs volume(tree / "small", "2m");
    if (!volume.mounted())
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root)";
    tree.file("src/first.txt", "1");
    tree.file("small/first.txt", "clash");
    for (int i = 0; i < 200; ++i)
        tree.file("src/F/part" + fileName(i), std::string(5000, 'p'));

    // The free-space check passes; answering the clash fills the volume, as another program
    // could, so that the folder's files meet a full disk part of the way through.
    const auto report = transfer(TransferEngine::Kind::copy, {tree / "src/first.txt", tree / "src/F"}, tree / "small",
                                 [&](TransferEngine& engine, CancellationToken&, OperationProgressTracker&) {
                                     engine.conflictHandler = [&](const NameConflict&) {
                                         tree.file("small/filler", std::string(1'500'000, 'f'));
                                         return ConflictDecision{ConflictChoice::keepBoth, false};
                                     };
                                 });

    ASSERT_TRUE(report.abortReason.has_value());
    EXPECT_EQ(entriesBelow(tree / "small"), (std::vector<std::string>{"filler", "first 2.txt", "first.txt"}));
    EXPECT_EQ(entriesBelow(tree / "src/F").size(), 200U);
}

TEST(TransferEngineTrees, CancellingAmidManyFilesLeavesNothingOfTheFolder)
{
    TempTree tree;
    makeFiles(tree, "src/F", 400);
    makeFiles(tree, "src/F/deeper", 400);
    tree.folder("out");
    std::jthread canceller;
    const auto report = transfer(TransferEngine::Kind::copy, {tree / "src/F"}, tree / "out",
                                 [&](TransferEngine&, CancellationToken& token, OperationProgressTracker& progress) {
                                     canceller = std::jthread([&token, &progress](std::stop_token stop) {
                                         while (!stop.stop_requested() && progress.snapshot().completedItems < 100)
                                             std::this_thread::yield();
                                         token.cancel();
                                     });
                                 });
    EXPECT_TRUE(report.cancelled);
    EXPECT_TRUE(entriesBelow(tree / "out").empty());
    EXPECT_EQ(entriesBelow(tree / "src/F").size(), 801U);
}

TEST(FileCopyQueue, ResultsComeBackInQueueOrderWhateverFinishesFirst)
{
    TempTree tree;
    tree.file("src/0-large.bin", std::string(32 << 20, 'L'));
    makeFiles(tree, "src", 40);
    tree.folder("out");
    const auto from = std::make_shared<const OwnedFd>(::open((tree / "src").c_str(), O_RDONLY | O_DIRECTORY));
    const auto to = std::make_shared<const OwnedFd>(::open((tree / "out").c_str(), O_RDONLY | O_DIRECTORY));
    std::atomic<std::int64_t> bytes = 0;
    FileCopyQueue queue(2, [&](const fs::path&, std::int64_t added) {
        bytes += added;
        return CopyControl::proceed;
    });

    std::vector<std::string> pushed = {"0-large.bin", "missing.txt"};
    for (int i = 0; i < 40; ++i)
        pushed.push_back(fileName(i));
    std::vector<std::string> taken;
    for (const auto& name : pushed) {
        queue.push({from, to, tree / "src" / name, tree / "out" / name, CopyOptions{.chunkBytes = 1 << 20}});
        if (queue.full())
            for (auto& done : queue.takeFinished(false))
                taken.push_back(done.job.source.filename().native() + (done.result ? "" : " failed"));
    }
    for (auto& done : queue.takeFinished(true))
        taken.push_back(done.job.source.filename().native() + (done.result ? "" : " failed"));

    pushed[1] += " failed";
    EXPECT_EQ(taken, pushed);
    std::int64_t expectedBytes = 32 << 20;
    for (int i = 0; i < 40; ++i)
        expectedBytes += static_cast<std::int64_t>(tree.read("out/" + fileName(i)).size());
    EXPECT_EQ(bytes, expectedBytes);
    EXPECT_EQ(tree.read("out/0-large.bin"), tree.read("src/0-large.bin"));
}

} // namespace
} // namespace orbisk
