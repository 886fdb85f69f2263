// Pictures of the viewer, the editor and the quick preview for docs/screenshots, taken only when
// ORBISK_SCREENSHOT_DIR names a folder (run under Xvfb with QT_QPA_PLATFORM=xcb).
#include "ScreenshotHarness.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"
#include "text/EditorWindow.h"
#include "text/FindBar.h"
#include "text/PagedTextView.h"
#include "text/QuickPreview.h"
#include "text/TextWindows.h"
#include "text/ViewerWindow.h"
#include "windows/MainWindow.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

std::string sampleLog()
{
    std::string log;
    const char* levels[] = {"INFO ", "DEBUG", "WARN ", "INFO ", "ERROR"};
    for (int i = 0; i < 5000; ++i) {
        log += "2026-11-24 08:" + std::to_string(10 + i / 600 % 50) + ":" + std::to_string(10 + i % 50) + " ";
        log += levels[i % 5];
        log += "  worker-" + std::to_string(i % 7) + "  request " + std::to_string(4000 + i) +
               (i % 5 == 4 ? " failed: connection reset by peer" : " served in " + std::to_string(i % 97) + " ms");
        log += "\n";
    }
    return log;
}

std::string samplePng()
{
    QImage image(360, 240, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 360, 240);
    gradient.setColorAt(0, QColor(30, 90, 160));
    gradient.setColorAt(1, QColor(240, 170, 60));
    painter.fillRect(image.rect(), gradient);
    painter.setPen(Qt::white);
    painter.setFont(QFont(QStringLiteral("Sans"), 28, QFont::Bold));
    painter.drawText(image.rect(), Qt::AlignCenter, QStringLiteral("holiday.png"));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

class TextScreenshots : public ScreenshotHarness {
protected:
    void SetUp() override
    {
        if (!picturesWanted())
            GTEST_SKIP() << "set ORBISK_SCREENSHOT_DIR to take the pictures";
        home_.file("Notes/server.log", sampleLog());
        home_.file("Notes/holiday.png", samplePng());
        std::string binary("\x7F"
                           "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x03\0\x3E\0\x01\0\0\0",
                           24);
        for (int i = 0; i < 4000; ++i)
            binary.push_back(static_cast<char>((i * 37 + i / 11) % 256));
        home_.file("Notes/tool", binary);
        home_.file("Notes/todo.txt", "Shopping\r\n- bread\r\n- milk\nCall the plumber\r\nRenew passport\r\n");
        home_.file("Notes/plan.md", "# Plan\n\n1. Sort the photos\n2. Back up the laptop\n3. Clean the garage\n");
        openWindow(home_ / "Notes", home_ / "Notes");
    }
    ViewerWindow* view(const char* name)
    {
        auto* viewer = new ViewerWindow(home_ / "Notes" / name, window_.get());
        viewer->setWindowFlag(Qt::Window);
        viewer->move(260, 120);
        viewer->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(viewer));
        return viewer;
    }
    EditorWindow* edit(const char* name)
    {
        window_->texts().edit(home_ / "Notes" / name);
        EditorWindow* editor = nullptr;
        EXPECT_TRUE(QTest::qWaitFor([&] { return (editor = window_->findChild<EditorWindow*>()) != nullptr; }));
        editor->move(260, 120);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(editor));
        return editor;
    }
};

TEST_F(TextScreenshots, ViewerOnText)
{
    auto* viewer = view("server.log");
    viewer->findBar()->open();
    viewer->findBar()->findField()->setText(QStringLiteral("request 4321"));
    viewer->findNext();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !viewer->searching() && viewer->view()->highlightEnd() > 0; }));
    snap("viewer-text.png", 400);
    viewer->close();
}

TEST_F(TextScreenshots, ViewerOnBinary)
{
    auto* viewer = view("tool");
    snap("viewer-hex.png", 400);
    viewer->close();
}

TEST_F(TextScreenshots, ViewerOnImage)
{
    auto* viewer = view("holiday.png");
    snap("viewer-image.png", 400);
    viewer->close();
}

TEST_F(TextScreenshots, EditorWithMixedEndingsAndTheModifiedOnDiskQuestion)
{
    auto* editor = edit("todo.txt");
    editor->editor()->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor->editor(), "Book the dentist");
    snap("editor-mixed-endings.png", 400);

    home_.file("Notes/todo.txt", "Changed by another program\n");
    editor->save();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !editor->saving() && editor->question(); }));
    snap("editor-modified-on-disk.png", 400);
    editor->question()->close();
    editor->editor()->document()->setModified(false);
    editor->close();
}

TEST_F(TextScreenshots, QuickPreview)
{
    auto& pane = window_->pane(Side::left);
    for (std::size_t row = 0; row < pane.rows().size(); ++row)
        if (pane.rows()[row].name() == "plan.md")
            pane.setSelectionFromView({static_cast<int>(row)}, static_cast<int>(row));
    window_->command(ShortcutCommand::quickPreview)->trigger();
    auto* preview = window_->texts().preview();
    ASSERT_NE(preview, nullptr);
    preview->move(760, 200);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->loading(); }));
    snap("quick-preview.png", 400);
}

} // namespace
} // namespace orbisk::test
