// Shift+F9 and Ctrl+Shift+F9 in the real window, offscreen, on real folders.
#include "AppSettings.h"
#include "WindowHarness.h"
#include "commands/FileCommands.h"
#include "dialogs/NamePrompt.h"
#include "operations/FileUndoCenter.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "shortcuts/ShortcutCommand.h"
#include "support/Processes.h"
#include "support/TempTree.h"
#include "windows/MainWindow.h"

#include <QAction>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class ZipCommandsTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.file("left/Reports/q1.txt", "first quarter");
        home_.file("left/Reports/q2.txt", "second quarter");
        home_.file("left/notes.txt", "notes");
        home_.folder("right");
        home_.folder(".local/share");
        WindowTest::SetUp();
        openPanes("left", "right");
        window_->setActiveSide(Side::left);
    }
    bool settled()
    {
        return QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }) && panesSettled();
    }
    void focus(const std::string& name)
    {
        auto& pane = window_->pane(Side::left);
        for (std::size_t i = 0; i < pane.rows().size(); ++i)
            if (pane.rows()[i].name() == name)
                pane.setSelectionFromView({static_cast<int>(i)}, static_cast<int>(i));
    }
    void selectAll()
    {
        auto& pane = window_->pane(Side::left);
        std::vector<int> rows;
        for (std::size_t i = 0; i < pane.rows().size(); ++i)
            if (!pane.rows()[i].isParentLink)
                rows.push_back(static_cast<int>(i));
        pane.setSelectionFromView(rows, rows.front());
    }
    std::set<std::string> selectedOnTheRight() const { return window_->pane(Side::right).selectedNames(); }
};

TEST_F(ZipCommandsTest, CompressProposesAFreeEditableNameAndIsOneUndoStep)
{
    selectAll();
    auto* prompt = window_->files().compressToOtherPane();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(prompt->field()->text().toStdString(), "left.zip") << "several items: the folder's name";
    prompt->field()->setText(QStringLiteral("Everything.zip"));
    prompt->accept();
    ASSERT_TRUE(settled());
    ASSERT_TRUE(home_.exists("right/Everything.zip"));
    EXPECT_EQ(selectedOnTheRight(), std::set<std::string>{"Everything.zip"});
    const auto listed = run({binary("orbisk-cli").native(), "ziplist", (home_ / "right/Everything.zip").native()});
    EXPECT_NE(listed.out.find("Reports/q2.txt"), std::string::npos) << listed.out;

    // One item: its own name, made free as new names are.
    home_.file("right/notes.txt.zip", "taken");
    ASSERT_TRUE(settled());
    focus("notes.txt");
    prompt = window_->files().compressToOtherPane();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(prompt->field()->text().toStdString(), "notes.txt 2.zip");
    prompt->reject();

    window_->undoCenter().undo();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->undoCenter().isBusy(); }));
    EXPECT_FALSE(home_.exists("right/Everything.zip")) << "undo puts the archive in the Trash";
    EXPECT_TRUE(home_.exists(".local/share/Trash/files/Everything.zip"));
}

TEST_F(ZipCommandsTest, ExtractPutsTheResultInTheOtherPaneSelectedAndUndoable)
{
    focus("Reports");
    ASSERT_TRUE(window_->command(ShortcutCommand::compressToOtherPane)->isEnabled());
    EXPECT_FALSE(window_->command(ShortcutCommand::extractToOtherPane)->isEnabled()) << "a folder is no archive";
    auto* prompt = window_->files().compressToOtherPane();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(prompt->field()->text().toStdString(), "Reports.zip");
    prompt->accept();
    ASSERT_TRUE(settled());

    // Extract it back from the right pane into the left, where "Reports" is taken.
    window_->setActiveSide(Side::right);
    auto& right = window_->pane(Side::right);
    for (std::size_t i = 0; i < right.rows().size(); ++i)
        if (right.rows()[i].name() == "Reports.zip")
            right.setSelectionFromView({static_cast<int>(i)}, static_cast<int>(i));
    ASSERT_TRUE(window_->command(ShortcutCommand::extractToOtherPane)->isEnabled());
    ASSERT_TRUE(window_->files().extractToOtherPane());
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("left/Reports 2/q1.txt"), "first quarter");
    EXPECT_EQ(window_->pane(Side::left).selectedNames(), std::set<std::string>{"Reports 2"});

    window_->undoCenter().undo();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->undoCenter().isBusy(); }));
    EXPECT_FALSE(home_.exists("left/Reports 2"));
    EXPECT_EQ(home_.read("left/Reports/q1.txt"), "first quarter");
}

TEST_F(ZipCommandsTest, RefusedMembersAreListedInTheReportAlert)
{
    if (!haveProgram("python3"))
        GTEST_SKIP() << "python3 is needed to build the hostile archives";
    const auto made =
        run({"python3", ORBISK_SOURCE_DIR "/tests/core/zip/hostile_archives.py", (home_ / "hostile").native()});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    fs::copy_file(home_ / "hostile/link-outside.zip", home_ / "left/link-outside.zip");
    window_->pane(Side::left).reload();
    ASSERT_TRUE(settled());
    focus("link-outside.zip");
    ASSERT_TRUE(window_->files().extractToOtherPane());
    ASSERT_TRUE(settled());
    QMessageBox* alert = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (alert = window_->findChild<QMessageBox*>()) != nullptr; }));
    const auto text = (alert->text() + QLatin1Char('\n') + alert->informativeText()).toStdString();
    EXPECT_NE(text.find("Extract finished with 2 problems."), std::string::npos) << text;
    EXPECT_NE(text.find("The symbolic link “up” points outside the extracted folder and was not created."),
              std::string::npos)
        << text;
    alert->close();
    EXPECT_TRUE(home_.exists("right/link-outside/keep.txt"));
}

} // namespace
} // namespace orbisk::test
