// The window's file commands driven through their dialogs, offscreen, on real folders.
#include "commands/FileCommands.h"
#include "AppSettings.h"
#include "WindowHarness.h"
#include "dialogs/ConflictDialog.h"
#include "dialogs/NamePrompt.h"
#include "dialogs/TransferDialog.h"
#include "operations/FileUndoCenter.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class FileCommandsTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.folder("left");
        home_.folder("right");
        home_.folder(".local/share");
        WindowTest::SetUp();
    }

    /// Both panes on their folders, the left one active.
    void open()
    {
        openPanes("left", "right");
        window_->setActiveSide(Side::left);
    }
    bool settled()
    {
        return QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }) && panesSettled();
    }
    /// Selects names in the pane, the first one focused, as clicks in the list would.
    void select(Side side, const std::vector<std::string>& names)
    {
        auto& pane = window_->pane(side);
        std::vector<int> rows;
        for (const auto& name : names) {
            for (std::size_t i = 0; i < pane.rows().size(); ++i)
                if (pane.rows()[i].name() == name)
                    rows.push_back(static_cast<int>(i));
        }
        ASSERT_EQ(rows.size(), names.size());
        pane.setSelectionFromView(rows, rows.front());
    }
    template <class Widget> Widget* waitFor()
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
    void clickButton(QMessageBox* box, const std::string& text)
    {
        for (auto* button : box->buttons())
            if (button->text().toStdString() == text) {
                button->click();
                return;
            }
        ADD_FAILURE() << "no button " << text;
    }
    [[nodiscard]] std::vector<std::string> trashed() const
    {
        std::vector<std::string> names;
        const auto files = home_ / ".local/share/Trash/files";
        if (fs::exists(files))
            for (const auto& entry : fs::directory_iterator(files))
                names.push_back(entry.path().filename().native());
        return names;
    }
};

TEST_F(FileCommandsTest, CopyClashIsAnsweredInTheConflictDialog)
{
    struct Case {
        ConflictChoice choice;
        std::string clashing;   // contents of right/a.txt afterwards
        std::string kept;       // a file that must exist besides it ("" for none)
        std::size_t trashCount; // items sent to the Trash
    };
    const Case cases[] = {
        {ConflictChoice::keepBoth, "old", "a 2.txt", 0},
        {ConflictChoice::skip, "old", "", 0},
        {ConflictChoice::replace, "new", "", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(rawValue(c.choice)));
        fs::remove_all(home_ / "right");
        fs::remove_all(home_ / ".local/share/Trash");
        home_.file("left/a.txt", "new");
        home_.file("right/a.txt", "old");
        open();
        select(Side::left, {"a.txt"});

        auto* dialog = window_->files().copyToOtherPane();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->destinationField()->text().toStdString(), (home_ / "right").native());
        dialog->policyBox()->setCurrentIndex(0); // ask
        dialog->accept();

        auto* conflict = waitFor<ConflictDialog>();
        ASSERT_NE(conflict, nullptr);
        ASSERT_NE(conflict->button(c.choice), nullptr);
        conflict->button(c.choice)->click();
        ASSERT_TRUE(settled());

        EXPECT_EQ(home_.read("right/a.txt"), c.clashing);
        EXPECT_EQ(home_.read("left/a.txt"), "new");
        if (!c.kept.empty()) {
            EXPECT_EQ(home_.read("right/" + c.kept), "new");
        }
        EXPECT_EQ(trashed().size(), c.trashCount);
        EXPECT_EQ(settings_->transferConflictPolicy(), std::nullopt);
    }
}

TEST_F(FileCommandsTest, TypedDestinationsAndTheStoredPolicy)
{
    home_.file("left/a.txt", "A");
    home_.folder("right/sub");
    open();
    const auto copyAs = [&](const QString& typed, int policyIndex = 0) {
        select(Side::left, {"a.txt"});
        auto* dialog = window_->files().copyToOtherPane();
        dialog->destinationField()->setText(typed);
        dialog->policyBox()->setCurrentIndex(policyIndex);
        dialog->accept();
        ASSERT_TRUE(settled());
    };

    copyAs(QStringLiteral("~/right/sub"));
    EXPECT_EQ(home_.read("right/sub/a.txt"), "A") << "an existing folder receives the item";
    copyAs(QStringLiteral("../right/b.txt"));
    EXPECT_EQ(home_.read("right/b.txt"), "A") << "a new name, read against the active pane's folder";
    copyAs(QStringLiteral("*.bak"));
    EXPECT_EQ(home_.read("left/a.bak"), "A") << "a mask renames on the way";

    copyAs(QStringLiteral("~/nowhere/deeper/"));
    auto* alert = waitFor<QMessageBox>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text().toStdString(), "Invalid destination.");
    EXPECT_FALSE(home_.exists("nowhere"));
    alert->close();

    // The clash policy chosen in the dialog is stored and offered again next time.
    const auto replaceIndex =
        1 + static_cast<int>(std::ranges::find(TransferDialog::offeredPolicies(), ConflictChoice::replace) -
                             TransferDialog::offeredPolicies().begin());
    home_.file("left/a.txt", "A2");
    copyAs(QStringLiteral("~/right/sub"), replaceIndex);
    EXPECT_EQ(home_.read("right/sub/a.txt"), "A2") << "replaced without a question";
    EXPECT_EQ(settings_->transferConflictPolicy(), ConflictChoice::replace);
    select(Side::left, {"a.txt"});
    auto* again = window_->files().copyToOtherPane();
    EXPECT_EQ(again->policy(), ConflictChoice::replace);
    again->reject();
}

TEST_F(FileCommandsTest, AMoveToThePrefilledPaneFolderGoesIntoThatExactFolder)
{
    // The other pane shows "dest " (a trailing blank) beside "dest": the prefilled path is exact.
    home_.file("left/a.txt", "A");
    home_.folder("dest ");
    home_.folder("dest");
    openPanes("left", "dest ");
    window_->setActiveSide(Side::left);
    select(Side::left, {"a.txt"});
    auto* dialog = window_->files().moveToOtherPane();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->destinationField()->text().toStdString(), (home_ / "dest ").native());
    dialog->accept();
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("dest /a.txt"), "A");
    EXPECT_TRUE(fs::is_empty(home_ / "dest"));
    EXPECT_FALSE(home_.exists("left/a.txt"));

    window_->undoCenter().undo();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->undoCenter().isBusy(); }));
    EXPECT_EQ(home_.read("left/a.txt"), "A");
    EXPECT_TRUE(fs::is_empty(home_ / "dest "));
}

TEST_F(FileCommandsTest, RenameInPlaceAndTheTakenNameChoices)
{
    home_.file("left/a.txt", "A");
    open();
    select(Side::left, {"a.txt"});
    auto* prompt = window_->files().renameInPlace();
    ASSERT_NE(prompt, nullptr);
    EXPECT_EQ(prompt->field()->selectedText(), QStringLiteral("a")) << "the stem is selected, not the extension";
    prompt->field()->setText(QStringLiteral("b.txt"));
    prompt->accept();
    ASSERT_TRUE(settled());
    EXPECT_FALSE(home_.exists("left/a.txt"));
    EXPECT_EQ(home_.read("left/b.txt"), "A");
    EXPECT_EQ(window_->undoCenter().undoNames().back(), "Rename “a.txt”");

    for (const std::string choice : {"Keep Both", "Replace"}) {
        SCOPED_TRACE(choice);
        home_.file("left/c.txt", "C");
        home_.file("left/d.txt", "D");
        window_->pane(Side::left).reload();
        ASSERT_TRUE(settled());
        select(Side::left, {"c.txt"});
        auto* rename = window_->files().renameInPlace();
        rename->field()->setText(QStringLiteral("d.txt"));
        rename->accept();
        auto* question = waitFor<QMessageBox>();
        ASSERT_NE(question, nullptr);
        clickButton(question, choice);
        ASSERT_TRUE(settled());
        EXPECT_FALSE(home_.exists("left/c.txt"));
        if (choice == "Replace") {
            EXPECT_EQ(home_.read("left/d.txt"), "C");
            EXPECT_EQ(trashed(), std::vector<std::string>{"d.txt"});
        } else {
            EXPECT_EQ(home_.read("left/d.txt"), "D");
            EXPECT_EQ(home_.read("left/d 2.txt"), "C");
            fs::remove(home_ / "left/d 2.txt");
        }
    }
}

TEST_F(FileCommandsTest, NewItemsTakeTheNextFreeNameAndAreSelected)
{
    open();
    for (const bool folder : {true, false}) {
        const std::string first = folder ? "New Folder" : "New Text File.txt";
        const std::string second = folder ? "New Folder 2" : "New Text File 2.txt";
        for (const auto& expected : {first, second}) {
            SCOPED_TRACE(expected);
            auto* prompt = folder ? window_->files().newFolder() : window_->files().newTextFile();
            EXPECT_EQ(prompt->name(), expected);
            prompt->accept();
            ASSERT_TRUE(settled());
            EXPECT_EQ(fs::is_directory(home_ / "left" / expected), folder);
            EXPECT_TRUE(fs::exists(home_ / "left" / expected));
            EXPECT_EQ(window_->pane(Side::left).selectedNames(), std::set<std::string>{expected});
        }
    }
    // A name the file system refuses gets the command's own alert.
    auto* prompt = window_->files().newFolder();
    prompt->field()->setText(QStringLiteral("a/b"));
    prompt->accept();
    auto* alert = waitFor<QMessageBox>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text().toStdString(), "The folder couldn’t be created.");
}

TEST_F(FileCommandsTest, TrashAsksFirstAndCanBeUndone)
{
    home_.file("left/one", "1");
    home_.file("left/two", "2");
    open();
    EXPECT_FALSE(window_->command(ShortcutCommand::moveToTrash)->isEnabled()) << "nothing selected yet";
    select(Side::left, {"one", "two"});
    EXPECT_TRUE(window_->command(ShortcutCommand::moveToTrash)->isEnabled());
    EXPECT_TRUE(window_->command(ShortcutCommand::copyToOtherPane)->isEnabled());
    auto* question = window_->files().moveToTrash();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text().toStdString(), "Move 2 items to the Trash?\n“one”\n“two”");
    clickButton(question, "Cancel");
    ASSERT_TRUE(settled());
    EXPECT_TRUE(home_.exists("left/one"));

    select(Side::left, {"one", "two"});
    clickButton(window_->files().moveToTrash(), "Move to Trash");
    ASSERT_TRUE(settled());
    EXPECT_FALSE(home_.exists("left/one"));
    EXPECT_FALSE(home_.exists("left/two"));
    EXPECT_EQ(trashed().size(), 2u);

    window_->undoCenter().undo();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->undoCenter().isBusy(); }));
    EXPECT_EQ(home_.read("left/one"), "1");
    EXPECT_EQ(home_.read("left/two"), "2");

    window_->pane(Side::left).deselectAll();
    EXPECT_FALSE(window_->command(ShortcutCommand::moveToTrash)->isEnabled()) << "unavailable without a selection";
    EXPECT_EQ(window_->files().moveToTrash(), nullptr);
}

TEST_F(FileCommandsTest, TrashQuestionListsAFewNames)
{
    std::vector<FileItem> items;
    for (const auto* name : {"a", "b", "c", "d", "e", "f", "g"})
        items.emplace_back(home_.root() / name);
    const auto [one, explanation] = FileCommands::trashQuestion({items.front()});
    EXPECT_EQ(one, "Move “a” to the Trash?");
    EXPECT_EQ(explanation, "You can restore items from the Trash in your file manager.");
    const auto [seven, unused] = FileCommands::trashQuestion(items);
    EXPECT_EQ(seven, "Move 7 items to the Trash?\n“a”\n“b”\n“c”\n“d”\n“e”\n…and 2 more");
}

TEST_F(FileCommandsTest, NewFolderWithSelectionIsOneUndoStep)
{
    home_.file("left/x.txt", "X");
    home_.file("left/y.txt", "Y");
    home_.file("left/stays.txt");
    open();
    select(Side::left, {"x.txt", "y.txt"});
    const auto stepsBefore = window_->undoCenter().undoNames().size();
    auto* prompt = window_->files().newFolderWithSelection();
    ASSERT_NE(prompt, nullptr);
    prompt->field()->setText(QStringLiteral("Box"));
    prompt->accept();
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("left/Box/x.txt"), "X");
    EXPECT_EQ(home_.read("left/Box/y.txt"), "Y");
    EXPECT_TRUE(home_.exists("left/stays.txt"));
    ASSERT_EQ(window_->undoCenter().undoNames().size(), stepsBefore + 1);

    window_->undoCenter().undo();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->undoCenter().isBusy(); }));
    EXPECT_EQ(home_.read("left/x.txt"), "X");
    EXPECT_EQ(home_.read("left/y.txt"), "Y");
    EXPECT_FALSE(home_.exists("left/Box")) << "the emptied folder goes to the Trash in the same step";
    EXPECT_EQ(trashed(), std::vector<std::string>{"Box"});
}

TEST_F(FileCommandsTest, DuplicateNamesCountUp)
{
    home_.file("left/a.txt", "A");
    home_.folder("left/My.Folder");
    open();
    for (const auto& expected :
         {std::pair{"a copy.txt", "My.Folder copy"}, std::pair{"a copy 2.txt", "My.Folder copy 2"}}) {
        SCOPED_TRACE(expected.first);
        select(Side::left, {"a.txt", "My.Folder"});
        window_->files().duplicate(window_->pane(Side::left));
        ASSERT_TRUE(settled());
        EXPECT_EQ(home_.read(std::string("left/") + expected.first), "A");
        EXPECT_TRUE(fs::is_directory(home_ / "left" / expected.second));
    }
}

TEST_F(FileCommandsTest, ClipboardAndDropsCarryNamesThatAreNotUtf8)
{
    const std::string odd = "caf\xE9 \xFF.txt";
    home_.file("left/" + odd, "bytes");
    open();
    select(Side::left, {odd});
    window_->files().copyFiles();
    window_->setActiveSide(Side::right);
    window_->files().pasteFiles(false);
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("right/" + odd), "bytes");
    EXPECT_TRUE(home_.exists("left/" + odd)) << "pasting copies";

    // Move Copied Files Here moves what was copied; a drop onto a folder row moves into it.
    home_.folder("right/inside");
    fs::remove(home_ / "right" / odd);
    window_->files().pasteFiles(true);
    ASSERT_TRUE(settled());
    EXPECT_FALSE(home_.exists("left/" + odd));
    EXPECT_EQ(home_.read("right/" + odd), "bytes");

    window_->files().drop({{home_ / "right" / odd}, false}, home_ / "right/inside", Qt::MoveAction);
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("right/inside/" + odd), "bytes");
    window_->files().drop({{home_ / "right/inside" / odd}, false}, home_ / "right/inside", Qt::MoveAction);
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("right/inside/" + odd), "bytes") << "a drop where the item already is does nothing";
    window_->files().drop({{home_ / "right/inside" / odd}, false}, home_ / "left", Qt::CopyAction);
    ASSERT_TRUE(settled());
    EXPECT_EQ(home_.read("left/" + odd), "bytes");
    EXPECT_TRUE(home_.exists("right/inside/" + odd));
}

TEST_F(FileCommandsTest, DroppingOnAListGoesIntoTheFolderRowUnderTheCursor)
{
    home_.file("left/dragged.txt", "D");
    home_.folder("right/target");
    open();
    auto* list = window_->paneWidget(Side::right).list();
    const auto dropAt = [&](const std::string& rowName, Qt::KeyboardModifiers modifiers) {
        int row = -1;
        const auto& rows = window_->pane(Side::right).rows();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (rows[i].name() == rowName)
                row = static_cast<int>(i);
        const QPoint where = row < 0 ? QPoint(10, list->viewport()->height() - 5)
                                     : list->visualRect(list->model()->index(row, 0)).center();
        std::unique_ptr<QMimeData> data(FileMimeData::make({home_ / "left/dragged.txt"}, false));
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(where, actions, data.get(), Qt::LeftButton, modifiers);
        QApplication::sendEvent(list->viewport(), &enter);
        QDragMoveEvent move(where, actions, data.get(), Qt::LeftButton, modifiers);
        QApplication::sendEvent(list->viewport(), &move);
        EXPECT_TRUE(move.isAccepted());
        QDropEvent drop(QPointF(where), actions, data.get(), Qt::LeftButton, modifiers);
        QApplication::sendEvent(list->viewport(), &drop);
        EXPECT_TRUE(drop.isAccepted());
        ASSERT_TRUE(settled());
    };

    dropAt("target", Qt::ControlModifier);
    EXPECT_EQ(home_.read("right/target/dragged.txt"), "D") << "a folder row receives the drop";
    EXPECT_TRUE(home_.exists("left/dragged.txt")) << "Ctrl copies";

    dropAt("", Qt::NoModifier);
    EXPECT_EQ(home_.read("right/dragged.txt"), "D") << "empty space is the pane's own folder";
    EXPECT_FALSE(home_.exists("left/dragged.txt")) << "on the same volume a plain drop moves";
}

} // namespace
} // namespace orbisk::test
