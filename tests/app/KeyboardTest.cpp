// The window used from the keyboard alone: real key presses on whatever has the focus, offscreen.
#include "AppSettings.h"
#include "WindowHarness.h"
#include "dialogs/ConflictDialog.h"
#include "dialogs/ProgressPanel.h"
#include "dialogs/TransferDialog.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

class KeyboardTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.folder("right");
        home_.folder(".local/share");
        for (const char* name : {"a", "b", "c", "d", "e"})
            home_.file(std::string("left/") + name, name);
        WindowTest::SetUp();
        if (HasFatalFailure())
            return;
        openPanes("left", "right");
        window_->setActiveSide(Side::left);
    }

    PaneViewController& left() { return window_->pane(Side::left); }
    static QWidget* focused() { return QApplication::focusWidget(); }
    /// A key press where the keyboard is now, as the user's would land.
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(focused() ? focused() : window_.get(), static_cast<Qt::Key>(key), modifiers);
    }
    [[nodiscard]] std::string cursor()
    {
        const auto item = left().focusedItem();
        return item ? item->name() : std::string("(none)");
    }
    [[nodiscard]] bool enabled(ShortcutCommand command) { return window_->command(command)->isEnabled(); }
    /// Moves the cursor onto name with Down alone.
    void downTo(const std::string& name)
    {
        press(Qt::Key_Home);
        for (std::size_t i = 0; i < left().rows().size() && cursor() != name; ++i)
            press(Qt::Key_Down);
        ASSERT_EQ(cursor(), name);
    }
    /// Waits for a visible window of type Widget that has the keyboard focus.
    template <class Widget> Widget* focusedWindow()
    {
        Widget* found = nullptr;
        static_cast<void>(QTest::qWaitFor([&] {
            found = focused() ? qobject_cast<Widget*>(focused()->window()) : nullptr;
            return found != nullptr && found->isVisible();
        }));
        return found;
    }
    template <class Widget> Widget* shown()
    {
        Widget* found = nullptr;
        static_cast<void>(QTest::qWaitFor([&] {
            for (auto* widget : window_->findChildren<Widget*>())
                if (widget->isVisible())
                    found = widget;
            return found != nullptr;
        }));
        return found;
    }
    [[nodiscard]] bool settled()
    {
        if (!QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }) || !panesSettled())
            return false;
        // A window manager gives the keyboard back to the window when its dialog closes; offscreen
        // there is none to do it.
        if (!QApplication::activeWindow()) {
            window_->activateWindow();
            return QTest::qWaitForWindowActive(window_.get());
        }
        return true;
    }
    /// F8 and Return in the question that follows.
    void trashWithKeys()
    {
        press(Qt::Key_F8);
        ASSERT_NE(focusedWindow<QMessageBox>(), nullptr) << "the question has the keyboard";
        press(Qt::Key_Return);
        ASSERT_TRUE(settled());
    }
};

TEST_F(KeyboardTest, HomeAndEndGoToTheFirstAndLastItemAndSelectIt)
{
    window_->paneWidget(Side::left).list()->setFocus();
    ASSERT_EQ(focused(), window_->paneWidget(Side::left).list());
    downTo("b");

    press(Qt::Key_End);
    EXPECT_EQ(cursor(), "e");
    EXPECT_EQ(left().selectedNames(), Names{"e"});
    EXPECT_TRUE(enabled(ShortcutCommand::moveToTrash));
    EXPECT_EQ(window_->paneWidget(Side::left).list()->currentIndex().column(), 0) << "the cursor stays in the names";

    press(Qt::Key_Home);
    EXPECT_EQ(cursor(), "..");
    EXPECT_TRUE(left().selectedNames().empty());

    press(Qt::Key_Down);
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(cursor(), "e");
    EXPECT_EQ(left().selectedNames(), (Names{"a", "b", "c", "d", "e"}));
    press(Qt::Key_Up);
    press(Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(cursor(), "..");
    EXPECT_EQ(left().selectedNames(), (Names{"a", "b", "c", "d"})) << "Shift+Home extends up from d";

    // The Ctrl forms move the same way and select too, rather than only moving a cursor.
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(cursor(), "e");
    EXPECT_EQ(left().selectedNames(), Names{"e"});
    EXPECT_TRUE(enabled(ShortcutCommand::copyToOtherPane));
    EXPECT_TRUE(enabled(ShortcutCommand::moveToOtherPane));
    EXPECT_TRUE(enabled(ShortcutCommand::moveToTrash));
    press(Qt::Key_Up);
    press(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(cursor(), "..");
    EXPECT_EQ(left().selectedNames(), (Names{"a", "b", "c", "d"}));
    press(Qt::Key_Home, Qt::ControlModifier);
    press(Qt::Key_Down);
    EXPECT_EQ(cursor(), "a");
    EXPECT_EQ(left().selectedNames(), Names{"a"});
}

TEST_F(KeyboardTest, AfterTrashAndMoveTheCursorLandsBesideTheRemovedItems)
{
    window_->paneWidget(Side::left).list()->setFocus();
    downTo("b");
    press(Qt::Key_Down, Qt::ShiftModifier);
    ASSERT_EQ(left().selectedNames(), (Names{"b", "c"}));
    trashWithKeys();
    ASSERT_FALSE(home_.exists("left/b"));
    EXPECT_EQ(cursor(), "d") << "the item after the removed ones";
    EXPECT_EQ(left().selectedNames(), Names{"d"});
    EXPECT_TRUE(enabled(ShortcutCommand::moveToTrash)) << "F8 can be pressed again at once";

    // The last item gone: the one before it takes the cursor.
    press(Qt::Key_End);
    trashWithKeys();
    ASSERT_FALSE(home_.exists("left/e"));
    EXPECT_EQ(cursor(), "d");

    // F6 with Return in its dialog: the same landing after a move.
    downTo("a");
    press(Qt::Key_F6);
    ASSERT_NE(focusedWindow<TransferDialog>(), nullptr);
    press(Qt::Key_Return);
    ASSERT_TRUE(settled());
    ASSERT_TRUE(home_.exists("right/a"));
    EXPECT_EQ(cursor(), "d");
    EXPECT_EQ(left().selectedNames(), Names{"d"});

    // The only item left goes: the cursor falls back to "..", with nothing to act on.
    trashWithKeys();
    EXPECT_EQ(cursor(), "..");
    EXPECT_FALSE(enabled(ShortcutCommand::moveToTrash));
}

TEST_F(KeyboardTest, TheClashQuestionKeepsTheKeyboardWhenTheProgressPanelAppears)
{
    home_.file("right/a", "old");
    // The panel comes up while the question is already open, as it does for a copy that waits.
    window_->operations().setTimings({300, 20});
    for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
        SCOPED_TRACE(key == Qt::Key_Return ? "Return" : "Escape");
        window_->paneWidget(Side::left).list()->setFocus();
        downTo("a");
        press(Qt::Key_F5);
        ASSERT_NE(focusedWindow<TransferDialog>(), nullptr);
        press(Qt::Key_Return);
        ASSERT_NE(focusedWindow<ConflictDialog>(), nullptr);
        ASSERT_NE(shown<ProgressPanel>(), nullptr);
        QTest::qWait(50);
        ASSERT_NE(focusedWindow<ConflictDialog>(), nullptr) << "the panel must not take the keyboard from it";
        press(key);
        ASSERT_TRUE(settled());
    }
    EXPECT_EQ(home_.read("right/a 2"), "a") << "Return kept both";
    EXPECT_EQ(home_.read("right/a"), "old");
    EXPECT_FALSE(home_.exists("right/a 3")) << "Escape cancelled";
}

TEST_F(KeyboardTest, EscapeInTheProgressPanelCancelsTheOperation)
{
    window_->operations().setTimings({0, 20});
    std::atomic<bool> sawCancel = false;
    window_->operations().run("Waiting", "Copy", "", window_.get(),
                              [&sawCancel](OperationContext& context) {
                                  const auto give = std::chrono::steady_clock::now() + std::chrono::seconds(20);
                                  while (!context.token.isCancelled() && std::chrono::steady_clock::now() < give)
                                      std::this_thread::sleep_for(std::chrono::milliseconds(5));
                                  sawCancel = context.token.isCancelled();
                                  OperationReport report;
                                  report.cancelled = sawCancel;
                                  return report;
                              },
                              {});
    ASSERT_NE(focusedWindow<ProgressPanel>(), nullptr) << "the panel takes the keyboard when it opens";
    press(Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }, 3000));
    EXPECT_TRUE(sawCancel);
}

} // namespace
} // namespace orbisk::test
