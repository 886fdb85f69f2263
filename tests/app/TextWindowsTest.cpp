// The viewer, the editor and the quick preview, driven through the main window's commands.
#include "WindowHarness.h"

#include "operations/FileUndoCenter.h"
#include "text/EditorWindow.h"
#include "text/FindBar.h"
#include "text/PagedTextView.h"
#include "text/QuickPreview.h"
#include "text/TextWindows.h"
#include "text/ViewerWindow.h"
#include "windows/FileListView.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QBuffer>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>
#include <fstream>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;
using C = ShortcutCommand;

std::string pngBytes(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

class TextWindowsTest : public WindowTest {
protected:
    void SetUp() override
    {
        home_.folder("work/folder");
        home_.file("work/folder/one", "1");
        home_.file("work/folder/two", "2");
        WindowTest::SetUp();
        openPanes("work", "work");
    }

    /// Puts the active pane's cursor on name.
    void focus(const std::string& name)
    {
        auto& pane = window_->activePane();
        if (pane.isLoading() || pane.directory() != home_ / "work") {
            pane.navigate(home_ / "work");
            ASSERT_TRUE(panesSettled());
        }
        pane.reload();
        ASSERT_TRUE(panesSettled());
        for (std::size_t row = 0; row < pane.rows().size(); ++row) {
            if (pane.rows()[row].name() == name) {
                pane.setSelectionFromView({static_cast<int>(row)}, static_cast<int>(row));
                return;
            }
        }
        FAIL() << "no row " << name;
    }

    template <class Window> Window* waitForWindow()
    {
        Window* found = nullptr;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            for (auto* candidate : window_->findChildren<Window*>())
                if (candidate->isVisible())
                    found = candidate;
            return found != nullptr;
        }));
        return found;
    }

    EditorWindow* edit(const std::string& name)
    {
        focus(name);
        window_->command(C::editFile)->trigger();
        return waitForWindow<EditorWindow>();
    }

    QMessageBox* waitForQuestion(EditorWindow* editor)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !editor->saving() && editor->question(); }));
        return editor->question();
    }
};

TEST_F(TextWindowsTest, TheViewerPagesTextFindsAndFollowsGrowth)
{
    std::string log;
    for (int i = 0; i < 20000; ++i)
        log += "entry " + std::to_string(i) + " of the log\n";
    const auto path = home_.file("work/app.log", log);
    focus("app.log");
    ASSERT_TRUE(window_->command(C::viewFile)->isEnabled());
    window_->command(C::viewFile)->trigger();
    auto* viewer = waitForWindow<ViewerWindow>();
    ASSERT_NE(viewer, nullptr);
    EXPECT_EQ(viewer->content(), ViewerWindow::Content::text);
    EXPECT_EQ(viewer->view()->visibleLines().value(0), QStringLiteral("entry 0 of the log"));
    EXPECT_TRUE(viewer->statusText().startsWith(QStringLiteral("UTF-8 · LF (Unix/macOS)")))
        << viewer->statusText().toStdString();

    viewer->findBar()->open();
    viewer->findBar()->findField()->setText(QStringLiteral("ENTRY 15000 "));
    viewer->findNext();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !viewer->searching(); }));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return viewer->view()->visibleLines().contains(QStringLiteral("entry 15000 of the log")); }));
    const auto firstHit = viewer->view()->highlightEnd();
    viewer->findNext(); // the only match: found again after wrapping
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return viewer->findBar()->message() == QStringLiteral("Search wrapped to the beginning"); }));
    EXPECT_EQ(viewer->view()->highlightEnd(), firstHit);
    viewer->findBar()->findField()->setText(QStringLiteral("no such words"));
    viewer->findNext();
    ASSERT_TRUE(QTest::qWaitFor([&] { return viewer->findBar()->message() == QStringLiteral("Not found"); }));

    viewer->setFollowInterval(20);
    viewer->followAction()->setChecked(true);
    {
        std::ofstream out(path, std::ios::app);
        out << "appended while following\n";
    }
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return viewer->view()->visibleLines().contains(QStringLiteral("appended while following")); }));

    QTest::keyClick(viewer->view(), Qt::Key_Escape); // where the keyboard is
    EXPECT_TRUE(QTest::qWaitFor([&] { return window_->findChildren<ViewerWindow*>().isEmpty(); }));
}

TEST_F(TextWindowsTest, TheViewerShowsBinariesAsHexImagesAsImagesAndNeverBlocksOnAFifo)
{
    home_.file("work/data.bin", std::string("\x7F"
                                            "ELF\0\0\0\x01",
                                            8) +
                                    std::string(100, '\x02'));
    home_.file("work/picture.png", pngBytes(40, 30));
    home_.fifo("work/pipe");
    struct Case {
        const char* name;
        ViewerWindow::Content content;
    };
    for (const auto& c :
         {Case{"data.bin", ViewerWindow::Content::hex}, Case{"picture.png", ViewerWindow::Content::image},
          Case{"pipe", ViewerWindow::Content::failed}}) {
        SCOPED_TRACE(c.name);
        ViewerWindow viewer(home_ / "work" / c.name);
        EXPECT_EQ(viewer.content(), c.content);
        if (c.content == ViewerWindow::Content::hex) {
            EXPECT_EQ(viewer.view()->visibleLines().value(0),
                      QStringLiteral("00000000  7f 45 4c 46 00 00 00 01  02 02 02 02 02 02 02 02  |.ELF............|"));
        }
        if (c.content == ViewerWindow::Content::image) {
            EXPECT_TRUE(viewer.statusText().startsWith(QStringLiteral("40 × 30")));
        }
        if (c.content == ViewerWindow::Content::failed) {
            EXPECT_EQ(viewer.statusText(),
                      QStringLiteral("“pipe” is not a regular file (it may be a folder, a pipe or a device)."));
        }
    }
}

TEST_F(TextWindowsTest, TheEditorSavesInTheFilesOwnEndingsAndItsUndoIsItsOwn)
{
    const auto path = home_.file("work/mixed.txt", "one\r\ntwo\r\nthree\nnbsp\xC2\xA0"
                                                   "and\xE2\x80\xA8separator\r\n");
    auto* editor = edit("mixed.txt");
    ASSERT_NE(editor, nullptr);
    EXPECT_TRUE(editor->mixedNotice()->isVisible());
    EXPECT_EQ(editor->mixedNotice()->text(),
              QStringLiteral("This file mixes line endings. Saving writes CRLF (Windows) everywhere."));
    EXPECT_EQ(editor->encodingChoice()->currentText(), QStringLiteral("UTF-8"));

    editor->editor()->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor->editor(), "four");
    EXPECT_TRUE(editor->isModified());
    EXPECT_FALSE(window_->undoCenter().canUndo()) << "typing must not reach the file history";
    QTest::keyClick(editor->editor(), Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(editor->editor(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(editor->editor()->toPlainText().endsWith(QStringLiteral("four")));

    QTest::keyClick(editor->editor(), Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !editor->saving() && !editor->isModified(); }));
    EXPECT_EQ(home_.read("work/mixed.txt"), "one\r\ntwo\r\nthree\r\nnbsp\xC2\xA0"
                                            "and\xE2\x80\xA8separator\r\nfour");
    EXPECT_FALSE(editor->mixedNotice()->isVisible());

    // Another line ending chosen for the next save is a change of its own.
    editor->lineEndingChoice()->setCurrentIndex(
        editor->lineEndingChoice()->findText(QStringLiteral("LF (Unix/macOS)")));
    emit editor->lineEndingChoice()->activated(editor->lineEndingChoice()->currentIndex());
    EXPECT_TRUE(editor->isModified());
    editor->save();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !editor->saving() && !editor->isModified(); }));
    EXPECT_EQ(home_.read("work/mixed.txt"), "one\ntwo\nthree\nnbsp\xC2\xA0"
                                            "and\xE2\x80\xA8separator\nfour");
    EXPECT_TRUE(fs::is_regular_file(path));
}

TEST_F(TextWindowsTest, TheEditorRefusesToSaveOverAnotherProgramsChangeAndOffersReloadOrSaveAs)
{
    const auto path = home_.file("work/notes.txt", "mine\n");
    auto* editor = edit("notes.txt");
    ASSERT_NE(editor, nullptr);
    QTest::keyClicks(editor->editor(), "edited ");
    home_.file("work/notes.txt", "theirs, longer\n");

    editor->save();
    auto* question = waitForQuestion(editor);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), QStringLiteral("“notes.txt” couldn’t be saved."));
    EXPECT_EQ(question->informativeText(),
              QStringLiteral("The file was changed by another application after it was opened."));
    EXPECT_EQ(home_.read("work/notes.txt"), "theirs, longer\n");
    QAbstractButton* reload = nullptr;
    for (auto* button : question->buttons())
        reload = button->text() == QStringLiteral("Reload") ? button : reload;
    ASSERT_NE(reload, nullptr);
    reload->click();
    EXPECT_EQ(editor->editor()->toPlainText(), QStringLiteral("theirs, longer\n"));
    EXPECT_FALSE(editor->isModified());

    // Gone from disk: no reload, Save As offered; nothing is recreated behind the user's back.
    QTest::keyClicks(editor->editor(), "x");
    fs::remove(path);
    editor->save();
    question = waitForQuestion(editor);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->informativeText(),
              QStringLiteral("The file was moved or deleted by another application after it was opened."));
    QStringList buttons;
    for (auto* button : question->buttons())
        buttons << button->text().remove(QLatin1Char('&'));
    EXPECT_TRUE(buttons.contains(QStringLiteral("Save As…")));
    EXPECT_FALSE(buttons.contains(QStringLiteral("Reload")));
    EXPECT_FALSE(fs::exists(path));
    question->close();

    // Save As writes the new file without asking about the old one's stamp.
    editor->saveTo(home_ / "work/copy.txt");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !editor->saving() && !editor->isModified(); }));
    EXPECT_EQ(home_.read("work/copy.txt"), "xtheirs, longer\n");
    EXPECT_EQ(editor->path(), home_ / "work/copy.txt");

    // Closing with unsaved changes asks first; Discard closes without writing.
    QTest::keyClicks(editor->editor(), "unsaved");
    editor->close();
    question = waitForQuestion(editor);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), QStringLiteral("Do you want to save the changes to “copy.txt”?"));
    EXPECT_TRUE(editor->isVisible());
    question->button(QMessageBox::Discard)->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window_->findChildren<EditorWindow*>().isEmpty(); }));
    EXPECT_EQ(home_.read("work/copy.txt"), "xtheirs, longer\n");
}

TEST_F(TextWindowsTest, BinariesGoToTheirApplicationAndOtherRefusalsOfferIt)
{
    QWidget owner;
    std::vector<fs::path> opened;
    TextWindows texts(&owner, [&](const fs::path& path) {
        opened.push_back(path);
        return true;
    });
    home_.file("work/program", std::string("\x7F"
                                           "ELF\0\0",
                                           6));
    home_.file("work/latin1.txt", "caf\xE9");
    texts.edit(home_ / "work/program");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !opened.empty(); }));
    EXPECT_EQ(opened, std::vector<fs::path>{home_ / "work/program"});
    EXPECT_TRUE(owner.findChildren<EditorWindow*>().isEmpty());

    texts.edit(home_ / "work/latin1.txt");
    QMessageBox* box = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (box = owner.findChild<QMessageBox*>()) != nullptr; }));
    EXPECT_EQ(box->text(), QStringLiteral("“latin1.txt” couldn’t be opened for editing."));
    EXPECT_EQ(box->informativeText(),
              QStringLiteral(
                  "The file is not valid UTF-8 or BOM-marked UTF-16. To avoid corrupting it, it is not converted."));
    QAbstractButton* offer = nullptr;
    for (auto* button : box->buttons())
        offer = button->text() == QStringLiteral("Open in Default Application") ? button : offer;
    ASSERT_NE(offer, nullptr);
    offer->click();
    EXPECT_EQ(opened.back(), home_ / "work/latin1.txt");
    EXPECT_EQ(home_.read("work/latin1.txt"), "caf\xE9");
}

TEST_F(TextWindowsTest, TheQuickPreviewFollowsTheCursor)
{
    home_.file("work/readme.md", "# Title\nSome text\n");
    home_.file("work/blob.bin", std::string("\0\x01\x02\x03", 4));
    focus("readme.md");
    // The real key on the focused list, as the user presses it.
    auto* list = window_->paneWidget(window_->activeSide()).list();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Space);
    auto* preview = window_->texts().preview();
    ASSERT_NE(preview, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->loading(); }));
    EXPECT_EQ(preview->content(), QuickPreview::Content::text);
    EXPECT_EQ(preview->shownText(), QStringLiteral("# Title\nSome text\n"));

    focus("folder");
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->item() == home_ / "work/folder" && !preview->loading(); }));
    EXPECT_EQ(preview->content(), QuickPreview::Content::folder);
    EXPECT_EQ(preview->shownText(), QStringLiteral("2 items"));

    focus("blob.bin");
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview->item() == home_ / "work/blob.bin" && !preview->loading(); }));
    EXPECT_EQ(preview->content(), QuickPreview::Content::hex);
    EXPECT_TRUE(preview->shownText().startsWith(QStringLiteral("00000000  00 01 02 03")));

    QTest::keyClick(list, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_FALSE(preview->isVisible());
}

} // namespace
} // namespace orbisk::test

namespace orbisk::test {
namespace {

// Wrapped lines are cut where the view is full, and scrolling by display lines down and back up
// again lands on the same pieces, tabs and multi-byte characters included.
TEST(PagedTextViewTest, WrapsLongLinesIntoPiecesThatScrollBothWays)
{
    std::string text = "short\n";
    std::string longLine;
    for (int i = 0; i < 40; ++i)
        longLine += "word\t\xC3\xA9t\xC3\xA9 " + std::to_string(i) + " ";
    text += longLine + "\nlast\n";
    PagedTextView view;
    view.resize(300, 400);
    view.show();
    view.setFile(std::make_shared<PagedFile>(PagedFile::fromBytes(text)), PagedTextView::Mode::text);
    view.setWrapping(true);
    const auto lines = view.visibleLines();
    ASSERT_GT(lines.size(), 4);
    EXPECT_EQ(lines.front(), QStringLiteral("short"));
    const int widest = static_cast<int>(std::ranges::max(lines, {}, &QString::size).size());
    QString joined;
    for (int i = 1; i < lines.size() && lines[i] != QStringLiteral("last"); ++i) {
        EXPECT_LE(lines[i].size(), widest);
        joined += lines[i];
    }
    QString expanded;
    for (const auto c : QString::fromUtf8(longLine))
        expanded += c == QLatin1Char('\t') ? QStringLiteral(" ") : QString(c);
    EXPECT_EQ(joined.simplified(), expanded.simplified()) << "wrapping lost or added text";

    std::vector<std::int64_t> tops{view.topOffset()};
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(&view, Qt::Key_Down);
        tops.push_back(view.topOffset());
    }
    EXPECT_GT(tops.back(), tops[1]);
    for (int i = 4; i >= 0; --i) {
        QTest::keyClick(&view, Qt::Key_Up);
        EXPECT_EQ(view.topOffset(), tops[static_cast<std::size_t>(i)]) << i;
    }
}

} // namespace
} // namespace orbisk::test
