// The pane model on real folders: listing rules, history, stale loads, watching, failures, tabs.
#include "PaneHarness.h"

#include <QSignalSpy>

#include "files/DirectoryReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>

#include <sys/stat.h>
#include <unistd.h>

namespace orbisk::test {
namespace {

using ::testing::ElementsAre;

TEST(PaneListingTest, ParentRowOnTopExceptAtRootAndNeverSelectedInBulk)
{
    PaneHarness h;
    h.tree().file("b.txt", "12");
    h.tree().file("a.txt", "1");
    h.tree().folder("z");
    ASSERT_TRUE(h.go(h.tree().root()));
    EXPECT_THAT(h.names(), ElementsAre("..", "z", "a.txt", "b.txt"));
    EXPECT_TRUE(h.pane().rows().front().isParentLink);

    auto& pane = h.pane();
    pane.selectAll();
    EXPECT_FALSE(pane.isSelected(0));
    EXPECT_EQ(pane.selectedItems().size(), 3u);
    pane.invertSelection();
    EXPECT_TRUE(pane.selectedItems().empty());
    EXPECT_FALSE(pane.isSelected(0));
    pane.selectMatching("*", true);
    EXPECT_FALSE(pane.isSelected(0)) << "the pattern \"*\" matches \"..\" but must not take it";
    EXPECT_EQ(pane.selectedItems().size(), 3u);
    pane.selectMatching("*.TXT", false);
    EXPECT_EQ(pane.selectedNames(), (std::set<std::string>{"z"}));
    EXPECT_EQ(pane.statusText(), "1 of 3 selected, 0 bytes");

    ASSERT_TRUE(h.go("/"));
    EXPECT_FALSE(h.names().empty());
    EXPECT_EQ(std::ranges::count(h.names(), ".."), 0);
    EXPECT_FALSE(pane.canGoUp());
}

TEST(PaneListingTest, FilterKeepsTheListingAndSaysHowManyItHides)
{
    PaneHarness h;
    for (int i = 0; i < 8; ++i)
        h.tree().file("photo" + std::to_string(i) + ".jpg");
    h.tree().file("notes.txt", "abc");
    h.tree().file("Readme.TXT", "abcdef");
    ASSERT_TRUE(h.go(h.tree().root()));
    auto& pane = h.pane();
    EXPECT_EQ(pane.statusText(), "10 items");

    const int generation = pane.loadGeneration();
    pane.filterChanged("*.txt");
    EXPECT_EQ(pane.loadGeneration(), generation) << "filtering must not read the disk again";
    EXPECT_THAT(h.names(), ElementsAre("..", "notes.txt", "Readme.TXT"));
    EXPECT_EQ(pane.statusText(), "2 items (filtered from 10)");
    pane.selectAll();
    EXPECT_EQ(pane.statusText(), "2 of 2 selected, 9 bytes (filtered from 10)");

    pane.filterChanged("");
    EXPECT_EQ(h.names().size(), 11u);
    EXPECT_EQ(pane.selectedNames(), (std::set<std::string>{"notes.txt", "Readme.TXT"}))
        << "clearing the filter keeps what was selected";
}

TEST(PaneListingTest, HiddenNamesFollowTheSettingAndNumbersSortByValue)
{
    PaneHarness h;
    h.tree().file(".profile");
    h.tree().file("listed-in-dot-hidden");
    h.tree().file(".hidden", "listed-in-dot-hidden\n");
    h.tree().file("a10");
    h.tree().file("a2");
    h.tree().file("A1");
    h.tree().file(std::string("caf\xE9"));
    ASSERT_TRUE(h.go(h.tree().root()));
    EXPECT_THAT(h.names(), ElementsAre("..", "A1", "a2", "a10", std::string("caf\xE9")));

    QSignalSpy rows(&h.pane(), &PaneViewController::rowsChanged);
    h.settings().setShowHiddenFiles(true);
    h.pane().preferencesChanged();
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(h.names().size(), 8u);
    EXPECT_NE(h.rowOf(".profile"), -1);
    EXPECT_NE(h.rowOf("listed-in-dot-hidden"), -1);
    EXPECT_GE(rows.count(), 1);
}

TEST(PaneListingTest, SettingsApplyAtOnceAndOpeningAFileGoesToItsApplication)
{
    std::vector<std::filesystem::path> opened;
    PaneServices services;
    services.openFile = [&](const std::filesystem::path& file) {
        opened.push_back(file);
        return file.filename() != "broken.txt";
    };
    PaneHarness h(services);
    h.tree().folder("b-folder");
    h.tree().file("a-file.txt");
    h.tree().file("broken.txt");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree().root()));
    EXPECT_THAT(h.names(), ElementsAre("..", "b-folder", "a-file.txt", "broken.txt"));

    h.settings().setDirectoriesFirst(false);
    pane.preferencesChanged();
    ASSERT_TRUE(h.settle());
    EXPECT_THAT(h.names(), ElementsAre("..", "a-file.txt", "b-folder", "broken.txt"));

    QSignalSpy failures(&pane, &PaneViewController::openFailed);
    pane.openRow(h.rowOf("a-file.txt"));
    pane.openRow(h.rowOf("broken.txt"));
    EXPECT_EQ(opened, (std::vector<std::filesystem::path>{h.tree() / "a-file.txt", h.tree() / "broken.txt"}));
    ASSERT_EQ(failures.count(), 1);
    EXPECT_EQ(failures.front().front().toString(), QStringLiteral("“broken.txt” couldn’t be opened."));
    EXPECT_EQ(pane.directory(), h.tree().root());

    pane.openRow(h.rowOf("b-folder"));
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.directory(), h.tree() / "b-folder");
    EXPECT_EQ(opened.size(), 2u) << "a folder is entered, never handed to an application";

    // With watching off, a change on disk waits for the next refresh.
    h.settings().setWatchDirectories(false);
    pane.preferencesChanged();
    const int generation = pane.loadGeneration();
    h.tree().file("b-folder/late");
    QTest::qWait(500);
    EXPECT_EQ(pane.loadGeneration(), generation);
    EXPECT_EQ(h.rowOf("late"), -1);
    pane.reload();
    ASSERT_TRUE(h.settle());
    EXPECT_NE(h.rowOf("late"), -1);
}

TEST(PaneHistoryTest, UpSelectsTheFolderLeftAndBackRestoresTheFocusedRow)
{
    PaneHarness h;
    h.tree().folder("one/inner");
    h.tree().file("one/x");
    h.tree().folder("two");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree() / "one"));
    EXPECT_FALSE(pane.canGoBack());
    ASSERT_TRUE(h.go(h.tree() / "one/inner"));
    pane.goUp();
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.directory(), h.tree() / "one");
    ASSERT_TRUE(pane.focusedItem());
    EXPECT_EQ(pane.focusedItem()->name(), "inner");
    EXPECT_EQ(pane.selectedNames(), (std::set<std::string>{"inner"}));

    // Focus "x", go elsewhere, come back: the row that had the focus has it again.
    pane.setSelectionFromView({h.rowOf("x")}, h.rowOf("x"));
    ASSERT_TRUE(h.go(h.tree() / "two"));
    EXPECT_TRUE(pane.canGoBack());
    EXPECT_FALSE(pane.canGoForward());
    pane.goBack();
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.directory(), h.tree() / "one");
    ASSERT_TRUE(pane.focusedItem());
    EXPECT_EQ(pane.focusedItem()->name(), "x");
    EXPECT_TRUE(pane.canGoForward());

    pane.goForward();
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.directory(), h.tree() / "two");
    EXPECT_FALSE(pane.canGoForward());
    ASSERT_TRUE(h.go(h.tree() / "one/inner"));
    pane.goBack();
    ASSERT_TRUE(h.settle());
    ASSERT_TRUE(h.go(h.tree().root()));
    EXPECT_FALSE(pane.canGoForward()) << "a new place empties the forward list";

    const auto before = pane.activeTab().back.size();
    pane.reload();
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.activeTab().back.size(), before) << "a reload records no history";
}

// A reader that holds back one folder until the test lets it go, to make a load slow on purpose.
struct GatedReader {
    std::filesystem::path slowFolder;
    std::shared_ptr<std::promise<void>> release = std::make_shared<std::promise<void>>();
    std::shared_future<void> released = release->get_future().share();

    PaneServices services()
    {
        PaneServices s;
        s.read = [folder = slowFolder, gate = released](const std::filesystem::path& path, bool hidden) {
            if (path == folder)
                gate.wait();
            return DirectoryReader::read(path, hidden);
        };
        return s;
    }
};

TEST(PaneLoadingTest, StaleResultsNeverReplaceNewerOnes)
{
    TempTree slowTree;
    slowTree.file("slow-file");
    GatedReader gate{slowTree.root()};

    {
        SCOPED_TRACE("a slow first load superseded by a quick second one");
        PaneHarness h(gate.services());
        h.tree().file("quick-file");
        auto& pane = h.pane();
        QSignalSpy busy(&pane, &PaneViewController::busyIndicatorChanged);
        pane.navigate(slowTree.root());
        ASSERT_TRUE(QTest::qWaitFor([&] { return pane.busyIndicatorShown(); }, 3000))
            << "a load that lasts shows the busy indicator";
        ASSERT_TRUE(h.go(h.tree().root()));
        EXPECT_FALSE(pane.busyIndicatorShown());
        gate.release->set_value();
        QTest::qWait(100);
        EXPECT_EQ(pane.directory(), h.tree().root());
        EXPECT_THAT(h.names(), ElementsAre("..", "quick-file"));
        EXPECT_TRUE(pane.activeTab().back.empty() || pane.activeTab().back.back().url != slowTree.root());
    }
    {
        SCOPED_TRACE("a load that finishes after its tab was left");
        GatedReader second{slowTree.root()};
        PaneHarness h(second.services());
        h.tree().file("first-tab-file");
        auto& pane = h.pane();
        ASSERT_TRUE(h.go(h.tree().root()));
        pane.navigate(slowTree.root()); // slow, in the first tab
        pane.newTab();                  // the new tab shows the tree root again
        ASSERT_TRUE(h.settle());
        second.release->set_value();
        QTest::qWait(100);
        EXPECT_EQ(pane.activeTabIndex(), 1);
        EXPECT_EQ(pane.directory(), h.tree().root());
        EXPECT_THAT(h.names(), ElementsAre("..", "first-tab-file"));
        EXPECT_EQ(pane.tabs()[0]->directory, h.tree().root()) << "the dropped load must not move its tab";
    }
}

TEST(PaneLoadingTest, SortChosenWhileLoadingWinsOverTheWorkersOrder)
{
    TempTree slowTree;
    slowTree.file("a", "1");
    slowTree.file("b", "333");
    slowTree.file("c", "22");
    GatedReader gate{slowTree.root()};
    PaneHarness h(gate.services());
    auto& pane = h.pane();
    pane.navigate(slowTree.root());
    pane.setSort({SortColumn::size, false});
    gate.release->set_value();
    ASSERT_TRUE(h.settle());
    EXPECT_THAT(h.names(), ElementsAre("..", "b", "c", "a"));
}

TEST(PaneLoadingTest, QuickLoadsNeverShowTheBusyIndicator)
{
    PaneHarness h;
    QSignalSpy busy(&h.pane(), &PaneViewController::busyIndicatorChanged);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(h.go(h.tree().root(), HistoryMode::reload));
    QTest::qWait(200);
    EXPECT_EQ(busy.count(), 0);
}

TEST(PaneWatchingTest, BurstOfChangesGivesOneReloadAndAGoneFolderMovesUp)
{
    PaneHarness h;
    h.settings().setWatchDirectories(true);
    h.tree().folder("outer/watched");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree() / "outer/watched"));
    pane.setSelectionFromView({}, 0);

    const int before = pane.loadGeneration();
    for (int i = 0; i < 20; ++i)
        h.tree().file("outer/watched/new" + std::to_string(i));
    ASSERT_TRUE(QTest::qWaitFor([&] { return h.names().size() == 21; }, 5000));
    QTest::qWait(500);
    EXPECT_EQ(pane.loadGeneration(), before + 1) << "twenty changes in a burst must give exactly one reload";
    EXPECT_EQ(pane.activeTab().back.size(), 0u) << "a reload after a change records no history";

    std::filesystem::remove_all(h.tree() / "outer/watched");
    ASSERT_TRUE(QTest::qWaitFor([&] { return pane.directory() == h.tree() / "outer"; }, 5000));
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.statusText(), "“watched” is no longer available.");
    ASSERT_TRUE(h.go(h.tree().root()));
    EXPECT_EQ(pane.statusText(), "1 items") << "the notice lasts only while the pane stays there";
}

TEST(PaneFailureTest, GoneVolumeGoesHomeAndMissingFolderGoesToNearestExisting)
{
    TempTree volumes;
    volumes.folder("stick/photos");
    auto mounted = std::make_shared<std::atomic<bool>>(true);
    PaneServices services;
    const auto stick = volumes / "stick";
    services.mounts = [mounted, stick] {
        std::vector<MountEntry> table{
            {.device = 0, .root = "/", .mountPoint = "/", .fileSystemType = "ext4", .source = "/dev/root"}};
        if (*mounted)
            table.push_back(
                {.device = 1, .root = "/", .mountPoint = stick, .fileSystemType = "vfat", .source = "/dev/sdb1"});
        return MountTable(table);
    };
    PaneHarness h(services);
    auto& pane = h.pane();
    h.tree().folder("a/b");

    {
        SCOPED_TRACE("ejected volume");
        ASSERT_TRUE(h.go(stick / "photos"));
        *mounted = false;
        std::filesystem::remove_all(stick);
        pane.reload(true);
        ASSERT_TRUE(QTest::qWaitFor([&] { return pane.directory() == h.tree().root(); }, 5000));
        ASSERT_TRUE(h.settle());
        EXPECT_EQ(pane.statusText(), "“stick” is no longer connected.");
    }
    {
        SCOPED_TRACE("volume unmounted while its root is shown: the folder under it is still there");
        std::filesystem::create_directories(stick);
        *mounted = true;
        ASSERT_TRUE(h.go(stick));
        *mounted = false;
        pane.reload(true);
        ASSERT_TRUE(QTest::qWaitFor([&] { return pane.directory() == h.tree().root(); }, 5000));
        ASSERT_TRUE(h.settle());
        EXPECT_EQ(pane.statusText(), "“stick” is no longer connected.");
        ASSERT_TRUE(h.go(stick));
        EXPECT_EQ(pane.directory(), stick) << "an ordinary folder now, it can be opened again";
        EXPECT_EQ(pane.statusText(), "0 items");
    }
    {
        SCOPED_TRACE("a folder typed that does not exist, on a volume that is there");
        ASSERT_TRUE(h.go(h.tree() / "a/b"));
        pane.navigate(h.tree() / "a/b/c/d");
        ASSERT_TRUE(QTest::qWaitFor([&] { return !pane.isLoading() && pane.notice(); }, 5000));
        ASSERT_TRUE(h.settle());
        EXPECT_EQ(pane.directory(), h.tree() / "a/b");
        EXPECT_EQ(pane.statusText(), "“d” is no longer available.");
    }
    if (::geteuid() != 0) {
        SCOPED_TRACE("no permission: the pane stays");
        h.tree().folder("locked");
        ::chmod((h.tree() / "locked").c_str(), 0);
        ASSERT_TRUE(h.go(h.tree().root()));
        ASSERT_FALSE(h.go(h.tree() / "locked") && pane.directory() == h.tree() / "locked");
        EXPECT_EQ(pane.directory(), h.tree().root());
        EXPECT_NE(pane.statusText().find("permission"), std::string::npos);
    }
}

TEST(PaneTabsTest, TabsKeepTheirOwnPlaceSortFilterAndSelection)
{
    PaneHarness h;
    h.tree().file("one/big", std::string(100, 'x'));
    h.tree().file("one/small", "x");
    h.tree().folder("two");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree() / "one"));
    pane.setSort({SortColumn::size, false});
    EXPECT_THAT(h.names(), ElementsAre("..", "big", "small"));
    pane.select({"small"});

    pane.newTab();
    ASSERT_TRUE(h.settle());
    ASSERT_EQ(pane.tabs().size(), 2u);
    EXPECT_EQ(pane.activeTabIndex(), 1);
    EXPECT_EQ(pane.directory(), h.tree() / "one");
    ASSERT_TRUE(h.go(h.tree() / "two"));
    pane.setSort({SortColumn::name, true});

    pane.selectAdjacentTab(1); // wraps round to the first tab
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(pane.activeTabIndex(), 0);
    EXPECT_EQ(pane.directory(), h.tree() / "one");
    EXPECT_THAT(h.names(), ElementsAre("..", "big", "small"));
    EXPECT_EQ(pane.selectedNames(), (std::set<std::string>{"small"}));
    EXPECT_FALSE(pane.canGoBack());

    pane.closeTab(0);
    ASSERT_TRUE(h.settle());
    ASSERT_EQ(pane.tabs().size(), 1u);
    EXPECT_EQ(pane.directory(), h.tree() / "two");
    EXPECT_TRUE(pane.canGoBack()) << "the surviving tab keeps its history";
    pane.closeTab(0);
    EXPECT_EQ(pane.tabs().size(), 1u) << "the last tab cannot be closed";
}

} // namespace
} // namespace orbisk::test
