// File undo and redo in the real window: Ctrl+Z order, refusals shown as alerts, text fields apart.
#include "operations/FileUndoCenter.h"
#include "AppSettings.h"
#include "WindowHarness.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class FileUndoCenterTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.file("left/a.txt", "a");
        home_.folder("right/sub");
        WindowTest::SetUp();
        if (HasFatalFailure())
            return;
        openPanes("left", "right");
        window_->setActiveSide(Side::left);
    }

    void transfer(TransferEngine::Kind kind, const fs::path& source, const fs::path& into)
    {
        TransferRequest request;
        request.kind = kind;
        request.sources = {source};
        request.into = into;
        window_->operations().transfer(request, window_.get(),
                                       [this](const OperationReport& report) { window_->showResults(report); });
        ASSERT_TRUE(idle());
    }
    [[nodiscard]] bool idle()
    {
        return QTest::qWaitFor(
            [this] { return window_->operations().runningCount() == 0 && !window_->undoCenter().isBusy(); });
    }
    void press(QWidget* target, Qt::Key key, Qt::KeyboardModifiers modifiers)
    {
        QTest::keyClick(target, key, modifiers);
    }
    QString menuText(ShortcutCommand command) const { return window_->command(command)->text(); }
    std::vector<QMessageBox*> alerts()
    {
        std::vector<QMessageBox*> shown;
        for (auto* box : window_->findChildren<QMessageBox*>())
            if (box->isVisible())
                shown.push_back(box);
        return shown;
    }
};

TEST_F(FileUndoCenterTest, TwoQuickUndosRevertTheLastTwoOperationsInOrderAndRedoFollows)
{
    // The second operation works on the first one's result: reverted out of order, the copy would
    // be missing when its own undo came.
    transfer(TransferEngine::Kind::copy, home_ / "left/a.txt", home_ / "right");
    transfer(TransferEngine::Kind::move, home_ / "right/a.txt", home_ / "right/sub");
    EXPECT_EQ(menuText(ShortcutCommand::undo), QStringLiteral("Undo Move “a.txt”"));
    EXPECT_FALSE(window_->command(ShortcutCommand::redo)->isEnabled());

    auto* list = window_->paneWidget(Side::left).list();
    list->setFocus();
    press(list, Qt::Key_Z, Qt::ControlModifier);
    press(list, Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(idle());

    EXPECT_TRUE(alerts().empty()) << "both reverts found everything as the operations left it";
    EXPECT_FALSE(home_.exists("right/a.txt"));
    EXPECT_FALSE(home_.exists("right/sub/a.txt"));
    EXPECT_EQ(home_.read(".local/share/Trash/files/a.txt"), "a") << "the copy went to the Trash";
    EXPECT_EQ(home_.read("left/a.txt"), "a");
    EXPECT_FALSE(window_->command(ShortcutCommand::undo)->isEnabled());
    EXPECT_EQ(menuText(ShortcutCommand::undo), QStringLiteral("Undo"));
    EXPECT_EQ(menuText(ShortcutCommand::redo), QStringLiteral("Redo Copy “a.txt”"));

    press(list, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(idle());
    EXPECT_EQ(home_.read("right/a.txt"), "a") << "redo brings the copy back from the Trash";
    EXPECT_EQ(menuText(ShortcutCommand::undo), QStringLiteral("Undo Copy “a.txt”"));
    EXPECT_EQ(menuText(ShortcutCommand::redo), QStringLiteral("Redo Move “a.txt”"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return window_->pane(Side::right).selectedNames().contains("a.txt"); }))
        << "what came back is selected";
}

TEST_F(FileUndoCenterTest, AnEditedCopyIsLeftInPlaceAndTheRefusalShown)
{
    transfer(TransferEngine::Kind::copy, home_ / "left/a.txt", home_ / "right");
    {
        std::ofstream edit(home_ / "right/a.txt", std::ios::app);
        edit << " edited";
    }
    window_->command(ShortcutCommand::undo)->trigger();
    ASSERT_TRUE(idle());

    EXPECT_EQ(home_.read("right/a.txt"), "a edited");
    const auto shown = alerts();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0]->text(), QStringLiteral("Undo finished with 1 problems."));
    EXPECT_TRUE(shown[0]->informativeText().contains(
        QStringLiteral("• “a.txt” changed after the operation, so it was left as it is.")));
    EXPECT_FALSE(window_->undoCenter().canRedo()) << "nothing was undone, so there is nothing to redo";
    shown[0]->close();
}

TEST_F(FileUndoCenterTest, AStepWhoseUndoWasRefusedStaysToBeTriedAgain)
{
    transfer(TransferEngine::Kind::move, home_ / "left/a.txt", home_ / "right");
    home_.file("left/a.txt", "in the way");
    window_->command(ShortcutCommand::undo)->trigger();
    ASSERT_TRUE(idle());

    auto shown = alerts();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_TRUE(shown[0]->informativeText().contains(
        QStringLiteral("• Another item named “a.txt” is now in its old place, so it was left where it is.")));
    shown[0]->close();
    EXPECT_EQ(home_.read("right/a.txt"), "a");
    EXPECT_TRUE(window_->undoCenter().canUndo()) << "the refused step is not used up";
    EXPECT_FALSE(window_->undoCenter().canRedo());

    fs::remove(home_ / "left/a.txt");
    window_->command(ShortcutCommand::undo)->trigger();
    ASSERT_TRUE(idle());
    EXPECT_TRUE(alerts().empty());
    EXPECT_EQ(home_.read("left/a.txt"), "a");
    EXPECT_FALSE(home_.exists("right/a.txt"));
    EXPECT_FALSE(window_->undoCenter().canUndo());
    EXPECT_TRUE(window_->undoCenter().canRedo());
}

TEST_F(FileUndoCenterTest, CtrlZInATextFieldUndoesTypingOnly)
{
    transfer(TransferEngine::Kind::copy, home_ / "left/a.txt", home_ / "right");
    const auto names = window_->undoCenter().undoNames();
    auto* field = window_->paneWidget(Side::left).filterField();
    field->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([field] { return field->hasFocus(); }));
    QTest::keyClicks(field, "xyz");
    ASSERT_EQ(field->text(), QStringLiteral("xyz"));

    press(field, Qt::Key_Z, Qt::ControlModifier);
    QTest::qWait(50);
    EXPECT_NE(field->text(), QStringLiteral("xyz")) << "the field undid its own typing";
    EXPECT_FALSE(window_->undoCenter().isBusy());
    EXPECT_EQ(window_->operations().runningCount(), 0U);
    EXPECT_TRUE(home_.exists("right/a.txt")) << "the copy was not undone";
    EXPECT_EQ(window_->undoCenter().undoNames(), names) << "typing neither added nor took file steps";

    press(field, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(field->text(), QStringLiteral("xyz"));
    EXPECT_FALSE(window_->undoCenter().canRedo());
}

} // namespace
} // namespace orbisk::test
