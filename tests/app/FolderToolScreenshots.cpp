// Pictures of folder sizes, the breakdown and the Find window for docs/screenshots, taken only
// when ORBISK_SCREENSHOT_DIR names a folder (run under Xvfb with QT_QPA_PLATFORM=xcb).
#include "ScreenshotHarness.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "tools/BreakdownView.h"
#include "tools/FindWindow.h"
#include "windows/MainWindow.h"

#include <QAction>
#include <QGuiApplication>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class FolderToolScreenshots : public ScreenshotHarness {
protected:
    void SetUp() override
    {
        if (!picturesWanted())
            GTEST_SKIP() << "set ORBISK_SCREENSHOT_DIR to take the pictures";
        home_.file("Projects/Photos/beach.jpg", std::string(3'400'000, 'p'));
        home_.file("Projects/Photos/hills.jpg", std::string(2'100'000, 'p'));
        home_.file("Projects/Music/live.flac", std::string(9'800'000, 'm'));
        home_.file("Projects/Reports/q3.pdf", std::string(480'000, 'r'));
        home_.file("Projects/Reports/notes.txt", "Budget review on Friday\nbring the Q3 figures\n");
        home_.file("Projects/Reports/2023/summary.txt", "the budget was met\n");
        home_.file("Projects/Code/main.cpp", "// budget calculator\nint main() {}\n");
        home_.folder("Projects/Empty");
        home_.file("Projects/readme.txt", "Projects folder\n");
        openWindow(home_ / "Projects", home_.root());
    }
    void focus(PaneViewController& pane, const std::string& name)
    {
        for (std::size_t i = 0; i < pane.rows().size(); ++i) {
            if (pane.rows()[i].name() == name)
                pane.setSelectionFromView({}, static_cast<int>(i));
        }
    }
};

TEST_F(FolderToolScreenshots, FolderSizesInTheSizeColumn)
{
    auto& pane = window_->pane(Side::left);
    pane.selectAll();
    window_->command(ShortcutCommand::calculateFolderSizes)->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return pane.folderSizes().size() == 5; }));
    pane.sortBy(SortColumn::size);
    snap("folder-sizes.png");
}

TEST_F(FolderToolScreenshots, BreakdownWhileMeasuringAndDone)
{
    // A real system folder, large enough to be caught while it is being measured.
    auto& pane = window_->pane(Side::left);
    pane.navigate("/");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !pane.isLoading(); }));
    focus(pane, "usr");
    window_->command(ShortcutCommand::toggleBreakdown)->trigger();
    auto* view = window_->breakdown();
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->list()->topLevelItemCount() > 3 || view->report().isComplete; }));
    QTest::qWait(150);
    snap("breakdown-measuring.png");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->report().isComplete; }, 120'000));
    snap("breakdown-done.png");
}

TEST_F(FolderToolScreenshots, FindWindowWithResults)
{
    window_->command(ShortcutCommand::findFiles)->trigger();
    auto* find = window_->findChild<FindWindow*>();
    ASSERT_NE(find, nullptr);
    find->move(200, 150);
    find->patternField()->setText("*.txt;*.cpp");
    find->containingField()->setText("budget");
    find->start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !find->isSearching(); }));
    find->list()->setCurrentItem(find->list()->topLevelItem(0));
    snap("find-window.png");
}

} // namespace
} // namespace orbisk::test
