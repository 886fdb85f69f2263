// Folder sizes, the breakdown and the Find window in the real window, offscreen.
#include "AppSettings.h"
#include "WindowHarness.h"
#include "panes/PaneViewController.h"
#include "tools/BreakdownView.h"
#include "tools/FindWindow.h"
#include "windows/FileListModel.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <fstream>

namespace orbisk::test {
namespace {

class FolderToolsTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.file("left/big/data.bin", std::string(200'000, 'b'));
        home_.file("left/big/inner/more.bin", std::string(50'000, 'm'));
        home_.file("left/small/note.txt", "a note with a needle\n");
        home_.folder("left/empty");
        home_.file("left/loose.txt", std::string(1'000, 'l'));
        home_.folder("right");
        WindowTest::SetUp();
        if (!HasFatalFailure())
            openPanes("left", "right");
    }

    PaneViewController& left() { return window_->pane(Side::left); }

    int rowOf(const PaneViewController& pane, const std::string& name)
    {
        for (std::size_t i = 0; i < pane.rows().size(); ++i) {
            if (pane.rows()[i].name() == name)
                return static_cast<int>(i);
        }
        return -1;
    }
    void focusRow(PaneViewController& pane, const std::string& name, bool selected = false)
    {
        const int row = rowOf(pane, name);
        ASSERT_NE(row, -1) << name;
        pane.setSelectionFromView(selected ? std::vector<int>{row} : std::vector<int>{}, row);
    }
    QString sizeCell(const std::string& name)
    {
        auto* model = window_->paneWidget(Side::left).list()->model();
        return model->index(rowOf(left(), name), FileListModel::size).data().toString();
    }
    std::vector<std::string> rowNames(const PaneViewController& pane)
    {
        std::vector<std::string> names;
        for (const auto& item : pane.rows())
            names.push_back(item.name());
        return names;
    }
};

/// What a cell shows, without the isolation marks around it.
QString plain(QString text)
{
    return text.remove(QChar(0x2068)).remove(QChar(0x2069));
}

TEST_F(FolderToolsTest, FolderSizesFillTheSizeColumnSortAndCountInTheStatus)
{
    left().selectAll();
    window_->command(ShortcutCommand::calculateFolderSizes)->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return left().folderSizes().size() == 3; }));
    EXPECT_EQ(plain(sizeCell("big")), "250 kB");
    EXPECT_EQ(plain(sizeCell("small")), "21 bytes");
    EXPECT_EQ(plain(sizeCell("empty")), "0 bytes");
    EXPECT_NE(left().statusText().find("251 kB"), std::string::npos) << left().statusText();

    left().sortBy(SortColumn::size);
    if (!left().activeTab().sort.ascending)
        left().sortBy(SortColumn::size);
    EXPECT_EQ(rowNames(left()), (std::vector<std::string>{"..", "empty", "small", "big", "loose.txt"}));

    // A folder that changes forgets its size once the listing is read again; the others keep theirs.
    std::ofstream(home_ / "left/small/new.txt") << "x";
    left().reload();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !left().isLoading() && left().folderSizes().size() == 2; }));
    EXPECT_EQ(plain(sizeCell("small")), "—");
    EXPECT_EQ(plain(sizeCell("big")), "250 kB");

    // Only the folder under the cursor when nothing is selected; leaving the folder forgets them all.
    left().deselectAll();
    focusRow(left(), "small");
    window_->command(ShortcutCommand::calculateFolderSizes)->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return left().folderSizes().size() == 3; }));
    EXPECT_EQ(plain(sizeCell("small")), "22 bytes");
    left().navigate(home_ / "left/big");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !left().isLoading(); }));
    EXPECT_TRUE(left().folderSizes().empty());
}

TEST_F(FolderToolsTest, BreakdownStandsInForTheOtherPaneAndWalksTheTree)
{
    settings_->setBreakdownFollowsCursor(true);
    focusRow(left(), "..");
    focusRow(left(), "big");
    window_->command(ShortcutCommand::toggleBreakdown)->trigger();
    auto* view = window_->breakdown();
    ASSERT_NE(view, nullptr);
    EXPECT_FALSE(window_->paneWidget(Side::right).isVisible());
    EXPECT_EQ(view->folder(), home_ / "left/big");
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return view->report().isComplete && view->report().folder == home_ / "left/big"; }));
    ASSERT_EQ(view->list()->topLevelItemCount(), 2);
    EXPECT_EQ(view->list()->topLevelItem(0)->text(0), "data.bin"); // largest first
    EXPECT_EQ(view->list()->topLevelItem(1)->text(0), "inner/");
    EXPECT_EQ(view->statusText(), "250 kB in 2 files and 1 folders");

    // The cursor moves in the active pane: the breakdown follows it.
    focusRow(left(), "small");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->folder() == home_ / "left/small"; }));

    // Enter breaks down a subfolder, Alt+Up goes back up with the cursor on it, Esc closes.
    view->list()->setFocus();
    focusRow(left(), "..");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->folder() == home_.root() && view->report().isComplete; }));
    const auto leftRow = view->list()->findItems("left/", Qt::MatchExactly);
    ASSERT_EQ(leftRow.size(), 1);
    view->list()->setCurrentItem(leftRow.front());
    QTest::keyClick(view->list(), Qt::Key_Return);
    EXPECT_EQ(view->folder(), home_ / "left");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->report().isComplete && view->list()->topLevelItemCount() == 4; }));
    EXPECT_EQ(view->list()->topLevelItem(0)->text(0), "big/");
    QTest::keyClick(view->list(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(view->folder(), home_.root());
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->report().isComplete; }));
    ASSERT_NE(view->list()->currentItem(), nullptr);
    EXPECT_EQ(view->list()->currentItem()->text(0), "left/");

    // With following switched off, the cursor no longer moves it.
    settings_->setBreakdownFollowsCursor(false);
    focusRow(left(), "big");
    QTest::qWait(300);
    EXPECT_EQ(view->folder(), home_.root());

    QTest::keyClick(view->list(), Qt::Key_Escape);
    EXPECT_EQ(window_->breakdown(), nullptr);
    EXPECT_TRUE(window_->paneWidget(Side::right).isVisible());
}

TEST_F(FolderToolsTest, FindWindowListsResultsAndShowsTheChosenOneInThePane)
{
    window_->command(ShortcutCommand::findFiles)->trigger();
    auto* find = window_->findChild<FindWindow*>();
    ASSERT_NE(find, nullptr);
    find->patternField()->setText("*.txt");
    find->start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !find->isSearching(); }));
    EXPECT_EQ(find->results().size(), 2u);
    EXPECT_EQ(find->summaryText(), "2 found in 8 items");

    find->containingField()->setText("NEEDLE");
    find->start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !find->isSearching(); }));
    ASSERT_EQ(find->results().size(), 1u);
    ASSERT_EQ(find->list()->topLevelItemCount(), 1);
    EXPECT_EQ(find->list()->topLevelItem(0)->text(4), "1: a note with a needle");

    find->list()->setCurrentItem(find->list()->topLevelItem(0));
    QTest::keyClick(find->list(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !left().isLoading() && left().directory() == home_ / "left/small"; }));
    const auto focused = left().focusedItem();
    ASSERT_TRUE(focused.has_value());
    EXPECT_EQ(focused->name(), "note.txt");
    EXPECT_EQ(left().selectedNames(), std::set<std::string>{"note.txt"});

    find->containingField()->setText("(");
    find->findChildren<QCheckBox*>()[1]->setChecked(true); // regular expression
    find->start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !find->isSearching(); }));
    EXPECT_EQ(find->summaryText(), "The regular expression isn’t valid (U_REGEX_MISMATCHED_PAREN).");
}

TEST_F(FolderToolsTest, TheCatalogKeysReachTheTools)
{
    auto* list = window_->paneWidget(Side::left).list();
    list->setFocus();
    focusRow(left(), "big", true);
    QTest::keyClick(list, Qt::Key_Return, Qt::AltModifier | Qt::ShiftModifier);
    ASSERT_TRUE(QTest::qWaitFor([&] { return left().folderSizes().size() == 1; }));
    EXPECT_EQ(left().directory(), home_ / "left"); // measured, not entered

    QTest::keyClick(list, Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_NE(window_->breakdown(), nullptr);
    window_->breakdown()->list()->setFocus();
    QTest::keyClick(window_->breakdown()->list(), Qt::Key_Escape);
    EXPECT_EQ(window_->breakdown(), nullptr);
    EXPECT_EQ(QApplication::focusWidget(), list);
    QTest::keyClick(list, Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_NE(window_->breakdown(), nullptr);
    QTest::keyClick(list, Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier); // again to close
    EXPECT_EQ(window_->breakdown(), nullptr);

    QTest::keyClick(list, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NE(window_->findChild<FindWindow*>(), nullptr);
}

} // namespace
} // namespace orbisk::test
