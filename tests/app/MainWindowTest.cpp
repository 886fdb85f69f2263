// The real window driven by key presses, offscreen.
#include "windows/MainWindow.h"
#include "AppSettings.h"
#include "WindowHarness.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "windows/FileListView.h"
#include "windows/FunctionKeyBar.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

class MainWindowTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.folder("left/inner");
        home_.file("left/file.txt");
        home_.folder("right");
        WindowTest::SetUp();
        if (!HasFatalFailure())
            openPanes("left", "right");
    }
    QWidget* focused() { return QApplication::focusWidget(); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(focused() ? focused() : window_.get(), static_cast<Qt::Key>(key), modifiers);
    }
};

TEST_F(MainWindowTest, TabReturnAndAltLeftDriveTheActivePane)
{
    auto& left = window_->pane(Side::left);
    window_->setActiveSide(Side::left);
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("left — Orbisk"));
    EXPECT_EQ(focused(), window_->paneWidget(Side::left).list());

    press(Qt::Key_Tab);
    EXPECT_EQ(window_->activeSide(), Side::right);
    EXPECT_EQ(focused(), window_->paneWidget(Side::right).list());
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("right — Orbisk"));
    press(Qt::Key_Tab);
    EXPECT_EQ(window_->activeSide(), Side::left);

    // Type-to-select puts the focus on "inner"; Return enters it.
    QTest::keyClicks(window_->paneWidget(Side::left).list(), "inn");
    ASSERT_TRUE(left.focusedItem());
    EXPECT_EQ(left.focusedItem()->name(), "inner");
    press(Qt::Key_Return);
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_ / "left/inner");
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("inner — Orbisk"));
    EXPECT_TRUE(window_->command(ShortcutCommand::back)->isEnabled());

    press(Qt::Key_Left, Qt::AltModifier);
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_ / "left");
    ASSERT_TRUE(left.focusedItem());
    EXPECT_EQ(left.focusedItem()->name(), "inner") << "back restores the row that had the focus";

    // Return on ".." goes up and selects the folder we came from.
    window_->paneWidget(Side::left)
        .list()
        ->setCurrentIndex(window_->paneWidget(Side::left).list()->model()->index(0, 0));
    press(Qt::Key_Return);
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_.root());
    ASSERT_TRUE(left.focusedItem());
    EXPECT_EQ(left.focusedItem()->name(), "left");
}

TEST_F(MainWindowTest, PaneCommandsFromTheKeyboard)
{
    auto& left = window_->pane(Side::left);
    auto& right = window_->pane(Side::right);
    window_->setActiveSide(Side::left);

    press(Qt::Key_A, Qt::ControlModifier); // select all
    auto* selection = window_->paneWidget(Side::left).list()->selectionModel();
    EXPECT_EQ(selection->selectedRows().size(), 2);
    EXPECT_FALSE(selection->isRowSelected(0, {})) << "\"..\" is never part of select all";
    EXPECT_EQ(left.selectedNames(), (std::set<std::string>{"inner", "file.txt"}));
    press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier); // deselect all
    EXPECT_TRUE(selection->selectedRows().isEmpty());

    press(Qt::Key_U, Qt::ControlModifier); // swap panes
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_ / "right");
    EXPECT_EQ(right.directory(), home_ / "left");

    press(Qt::Key_U, Qt::ControlModifier | Qt::AltModifier); // same folder in the other pane
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(right.directory(), home_ / "right");

    press(Qt::Key_T, Qt::ControlModifier); // new tab
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.tabs().size(), 2u);
    EXPECT_TRUE(window_->command(ShortcutCommand::closeTab)->isEnabled());
    press(Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.tabs().size(), 1u);
    EXPECT_FALSE(window_->command(ShortcutCommand::closeTab)->isEnabled());

    press(Qt::Key_Up, Qt::AltModifier); // enclosing folder
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_.root());

    press(Qt::Key_F, Qt::ControlModifier);
    auto* filter = window_->paneWidget(Side::left).filterField();
    EXPECT_EQ(focused(), filter);
    QTest::keyClicks(filter, "lef");
    EXPECT_EQ(left.rows().size(), 2u) << "\"..\" and \"left\"";
    press(Qt::Key_Escape);
    EXPECT_TRUE(filter->text().isEmpty());
    EXPECT_EQ(focused(), window_->paneWidget(Side::left).list());
    EXPECT_EQ(left.rows().size(), 3u);
}

TEST_F(MainWindowTest, SessionComesBackInTheNextWindow)
{
    window_->setActiveSide(Side::right);
    window_->pane(Side::right).newTab();
    window_->pane(Side::right).setSort({SortColumn::size, false});
    window_->setDividerRatio(0.3);
    QApplication::processEvents();
    ASSERT_TRUE(panesSettled());
    window_->close();

    MainWindow next(*settings_);
    next.restoreSession();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !next.pane(Side::right).isLoading(); }));
    EXPECT_EQ(next.activeSide(), Side::right);
    EXPECT_EQ(next.pane(Side::left).directory(), home_ / "left");
    ASSERT_EQ(next.pane(Side::right).tabs().size(), 2u);
    EXPECT_EQ(next.pane(Side::right).activeTabIndex(), 1);
    EXPECT_EQ(next.pane(Side::right).activeTab().sort, (SortSpec{SortColumn::size, false}));
    EXPECT_EQ(next.pane(Side::right).directory(), home_ / "right");
    next.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&next));
    EXPECT_NEAR(next.dividerRatio(), 0.3, 0.02);

    settings_->setSession("{\"left\": 3}");
    MainWindow fresh(*settings_);
    fresh.restoreSession();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fresh.pane(Side::left).isLoading(); }));
    EXPECT_EQ(fresh.pane(Side::left).directory(), home_.root()) << "an unreadable session starts at home";
    EXPECT_EQ(fresh.pane(Side::left).tabs().size(), 1u);
}

TEST_F(MainWindowTest, GoToFolderReadsRelativePathsAndSaysWhenThereIsNoSuchFolder)
{
    auto& left = window_->pane(Side::left);
    const auto answer = [&](const QString& typed) {
        window_->command(ShortcutCommand::goToFolder)->trigger();
        auto* dialog = window_->findChild<QInputDialog*>();
        ASSERT_NE(dialog, nullptr);
        dialog->setTextValue(typed);
        dialog->accept();
        QApplication::processEvents();
    };
    answer(QStringLiteral("../right"));
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_ / "right");

    answer(QStringLiteral("~/left/inner"));
    ASSERT_TRUE(panesSettled());
    EXPECT_EQ(left.directory(), home_ / "left/inner");

    answer(QStringLiteral("nowhere"));
    auto* message = window_->findChild<QMessageBox*>();
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text().toStdString(),
              "There is no folder at “" + (home_ / "left/inner/nowhere").native() + "”.");
    EXPECT_EQ(left.directory(), home_ / "left/inner");
    message->close();
}

TEST_F(MainWindowTest, LaterFeaturesAreShownButDisabled)
{
    using C = ShortcutCommand;
    for (const auto identifier : {C::copyToOtherPane, C::moveToOtherPane, C::moveToTrash, C::undo, C::ask}) {
        SCOPED_TRACE(static_cast<int>(identifier));
        const auto* action = window_->command(identifier);
        ASSERT_NE(action, nullptr);
        EXPECT_FALSE(action->isEnabled());
    }
    // The function-key bar: its F5 button follows the disabled copy command, and the View menu hides it.
    auto* bar = window_->findChild<FunctionKeyBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    QAction* hide = nullptr;
    for (auto* action : window_->findChildren<QAction*>())
        hide = action->text() == QStringLiteral("Hide Function Key Bar") ? action : hide;
    ASSERT_NE(hide, nullptr);
    hide->trigger();
    EXPECT_FALSE(bar->isVisible());
    EXPECT_FALSE(settings_->showFunctionKeyBar());
    EXPECT_EQ(hide->text(), QStringLiteral("Show Function Key Bar"));

    EXPECT_TRUE(window_->command(C::showShortcuts)->isEnabled());
    EXPECT_EQ(window_->command(C::showShortcuts)->shortcuts().value(0), QKeySequence(Qt::Key_F1));
}

} // namespace
} // namespace orbisk::test
