#include <gtest/gtest.h>

#include <sys/stat.h>

#include <thread>

#include "ZipTestSupport.h"
#include "core/operations/UndoTestSupport.h"
#include "operations/FileUndo.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

class ZipExtract : public testing::Test {
protected:
    // Zips one top item (or several) from a scratch folder, so that each test starts from an archive.
    fs::path archiveOf(const std::vector<std::string>& tops, const std::string& name)
    {
        std::vector<fs::path> sources;
        for (const auto& top : tops)
            sources.push_back(tree / ("src/" + top));
        const auto report = test::compress(sources, tree / name);
        EXPECT_TRUE(report.isCompleteSuccess()) << testing::PrintToString(test::messages(report));
        return tree / name;
    }

    TempTree tree;
    fs::path dest = tree.folder("dest");
};

TEST_F(ZipExtract, RoundTripKeepsContentsLinksModesAndDates)
{
    tree.file("src/Photos/a.txt", "alpha");
    tree.file("src/Photos/sub/.hidden", std::string(300000, 'z'));
    tree.folder("src/Photos/empty");
    tree.link("src/Photos/sub/up", "../a.txt");
    tree.link("src/Photos/dangling", "sub/missing");
    tree.file("src/Photos/caf\xE9", "not UTF-8");
    fs::permissions(tree / "src/Photos/a.txt", fs::perms(0751));
    fs::permissions(tree / "src/Photos/sub", fs::perms(0700));
    tree.setModificationTime("src/Photos/a.txt", 1'700'000'000);
    tree.setModificationTime("src/Photos/sub", 1'600'000'000);
    const auto archive = archiveOf({"Photos"}, "Photos.zip");

    const auto report = test::extract(archive, dest);
    ASSERT_TRUE(report.isCompleteSuccess()) << testing::PrintToString(test::messages(report));
    ASSERT_EQ(report.completed.size(), 1u);
    EXPECT_EQ(report.completed[0].destination, dest / "Photos");
    EXPECT_EQ(test::picture(dest / "Photos"), test::picture(tree / "src/Photos"));
    EXPECT_EQ(test::modeOf(dest / "Photos/a.txt") & 07777, 0751u);
    EXPECT_EQ(test::modeOf(dest / "Photos/sub") & 07777, 0700u);
    EXPECT_EQ(fs::last_write_time(dest / "Photos/a.txt"), fs::last_write_time(tree / "src/Photos/a.txt"));
    EXPECT_EQ(fs::last_write_time(dest / "Photos/sub"), fs::last_write_time(tree / "src/Photos/sub"))
        << "a folder's date is set after its contents are written";
    EXPECT_TRUE(test::stagingLeftIn(dest).empty());
}

TEST_F(ZipExtract, TakesTheNextFreeNameAndNeverMergesIntoWhatIsThere)
{
    tree.file("src/Photos/new.jpg", "new");
    const auto archive = archiveOf({"Photos"}, "Photos.zip");
    tree.file("dest/Photos/old.jpg", "old");

    auto report = test::extract(archive, dest);
    ASSERT_EQ(report.completed.size(), 1u);
    EXPECT_EQ(report.completed[0].destination, dest / "Photos 2");
    EXPECT_EQ(test::picture(dest / "Photos"), (std::map<std::string, std::string>{{"old.jpg", "old"}}));
    report = test::extract(archive, dest);
    EXPECT_EQ(report.completed.at(0).destination, dest / "Photos 3");

    // A single file keeps its extension after the number; a taken " 7" counts on from 8.
    tree.file("src/notes 7.txt", "n");
    const auto single = archiveOf({"notes 7.txt"}, "notes.zip");
    tree.file("dest/notes 7.txt", "existing");
    report = test::extract(single, dest);
    EXPECT_EQ(report.completed.at(0).destination, dest / "notes 8.txt");
    EXPECT_EQ(tree.read("dest/notes 7.txt"), "existing");
}

TEST_F(ZipExtract, SeveralTopItemsBecomeOneFolderNamedAfterTheArchive)
{
    tree.file("src/one.txt", "1");
    tree.file("src/two.txt", "2");
    const auto archive = archiveOf({"one.txt", "two.txt"}, "Pair.zip");
    const auto report = test::extract(archive, dest);
    ASSERT_TRUE(report.isCompleteSuccess());
    EXPECT_EQ(report.completed.at(0).destination, dest / "Pair");
    EXPECT_EQ(test::picture(dest / "Pair"), (std::map<std::string, std::string>{{"one.txt", "1"}, {"two.txt", "2"}}));
    EXPECT_EQ(test::modeOf(dest / "Pair") & 0777, 0755u);
}

TEST_F(ZipExtract, ExtractionAndCompressionAreUndoneByTrashingWhatTheyCreated)
{
    test::PrivateTrash trash(tree);
    tree.file("src/Docs/a.txt", "a");
    const auto archive = archiveOf({"Docs"}, "Docs.zip");
    auto compressed = test::compress({tree / "src/Docs"}, tree / "again.zip");
    auto extracted = test::extract(archive, dest);
    ASSERT_EQ(extracted.undoChanges.size(), 1u);

    for (auto* report : {&extracted, &compressed}) {
        const auto outcome = FileUndo::revert({"Zip", report->undoChanges}, FileUndo::systemTrash());
        EXPECT_TRUE(outcome.isComplete()) << testing::PrintToString(outcome.problems.size());
        ASSERT_EQ(outcome.inverse.changes.size(), 1u);
    }
    EXPECT_FALSE(fs::exists(dest / "Docs"));
    EXPECT_FALSE(fs::exists(tree / "again.zip"));
    EXPECT_TRUE(fs::exists(trash.folder() / "files/Docs/a.txt"));
    EXPECT_TRUE(fs::exists(trash.folder() / "files/again.zip"));
    EXPECT_EQ(tree.read("src/Docs/a.txt"), "a");
}

TEST_F(ZipExtract, ArchiveLevelProblemsCreateNothing)
{
    tree.file("short.zip", std::string(21, 'P'));
    tree.file("text.zip", std::string(5000, 'x'));
    for (const char* name : {"short.zip", "text.zip", "missing.zip"}) {
        SCOPED_TRACE(name);
        const auto report = test::extract(tree / name, dest);
        ASSERT_TRUE(report.abortReason);
        if (std::string_view(name) != "missing.zip") {
            EXPECT_EQ(*report.abortReason, "The file is not a ZIP archive or is damaged.");
        }
        EXPECT_TRUE(report.completed.empty());
        EXPECT_TRUE(fs::is_empty(dest));
    }
}

TEST_F(ZipExtract, CancellingRemovesTheStagingFolderAndLeavesTheDestinationAsItWas)
{
    std::string noise(3 << 20, '\0');
    unsigned state = 7;
    for (auto& c : noise)
        c = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
    for (int i = 0; i < 12; ++i)
        tree.file("src/big/" + std::to_string(i), noise);
    const auto archive = archiveOf({"big"}, "big.zip");
    tree.file("dest/existing.txt", "here before");

    CancellationToken token;
    OperationProgressTracker progress;
    std::jthread canceller([&](const std::stop_token& stop) {
        while (!stop.stop_requested() && progress.snapshot().completedItems < 3)
            std::this_thread::yield();
        token.cancel();
    });
    const auto report = ZipReader::extract(archive, dest, token, progress);
    EXPECT_TRUE(report.cancelled);
    EXPECT_TRUE(report.undoChanges.empty());
    EXPECT_EQ(test::picture(dest), (std::map<std::string, std::string>{{"existing.txt", "here before"}}));
}

} // namespace
} // namespace orbisk
