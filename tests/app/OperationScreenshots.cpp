// Pictures of the operation dialogs over the real window for docs/screenshots, taken only when
// ORBISK_SCREENSHOT_DIR names a folder (run under Xvfb with QT_QPA_PLATFORM=xcb).
#include "ScreenshotHarness.h"
#include "commands/FileCommands.h"
#include "dialogs/ConflictDialog.h"
#include "dialogs/NamePrompt.h"
#include "dialogs/ProgressPanel.h"
#include "operations/FileUndoCenter.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/Processes.h"
#include "support/TempTree.h"
#include "windows/MainWindow.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QProgressBar>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class OperationScreenshots : public ScreenshotHarness {
protected:
    void SetUp() override
    {
        if (!picturesWanted())
            GTEST_SKIP() << "set ORBISK_SCREENSHOT_DIR to take the pictures";
        home_.file("Projects/report.pdf", std::string(48'000, 'r'));
        home_.file("Projects/notes.txt", "new notes");
        home_.file("Projects/budget.ods", std::string(21'000, 'b'));
        home_.folder("Projects/Photos");
        home_.file("Backup/notes.txt", "old");
        home_.file("Backup/archive.zip", std::string(9'000, 'z'));
        home_.setModificationTime("Backup/notes.txt", 1'700'000'000);
        openWindow(home_ / "Projects", home_ / "Backup");
    }
    void copy(std::vector<fs::path> sources, const fs::path& into, TransferRequest request = {})
    {
        request.sources = std::move(sources);
        request.into = into;
        window_->operations().transfer(std::move(request), window_.get(),
                                       [this](const OperationReport& report) { window_->showResults(report); });
    }
};

TEST_F(OperationScreenshots, ConflictDialog)
{
    copy({home_ / "Projects/report.pdf", home_ / "Projects/notes.txt"}, home_ / "Backup");
    ConflictDialog* dialog = nullptr;
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return (dialog = window_->findChild<ConflictDialog*>()) && dialog->isVisible(); }));
    snap("conflict-dialog.png");
    dialog->choose(ConflictChoice::cancel);
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }));
}

TEST_F(OperationScreenshots, ProgressPanelDuringALargeCopy)
{
    home_.file("Projects/video.mkv", std::string(std::size_t{256} << 20, 'v'));
    window_->operations().setTimings({100, 50});
    TransferRequest request;
    request.copyOptions.chunkBytes = 4096;
    request.copyOptions.largestChunkBytes = 4096;
    request.copyOptions.firstMethod = CopyMethod::readWrite;
    copy({home_ / "Projects/video.mkv", home_ / "Projects/report.pdf", home_ / "Projects/budget.ods"},
         home_.folder("Backup/Copies"), request);
    ProgressPanel* panel = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        panel = window_->findChild<ProgressPanel*>();
        return panel && panel->isVisible() && panel->bar()->value() > panel->bar()->maximum() / 5;
    }));
    snap("progress-panel.png");
    panel->onCancel();
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }, 20000));
}

TEST_F(OperationScreenshots, ReportAlertWithSeveralFailures)
{
    home_.fifo("Projects/pipe");
    std::vector<fs::path> sources = {home_ / "Projects/report.pdf", home_ / "Projects/pipe"};
    for (const auto* gone : {"Q3 figures.xlsx", "draft (old).docx", "minutes.txt", "logo.svg", "plan.md",
                             "scan-0042.png", "slides.odp", "todo.txt", "readme.md", "invoice 17.pdf"})
        sources.push_back(home_ / "Projects" / gone);
    copy(sources, home_.folder("Backup/Copies"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }));
    QMessageBox* alert = window_->findChild<QMessageBox*>();
    ASSERT_NE(alert, nullptr);
    snap("report-alert.png");
    alert->close();
}

TEST_F(OperationScreenshots, CompressDialog)
{
    auto& pane = window_->pane(Side::left);
    std::vector<int> rows;
    for (std::size_t i = 0; i < pane.rows().size(); ++i)
        if (!pane.rows()[i].isParentLink)
            rows.push_back(static_cast<int>(i));
    pane.setSelectionFromView(rows, rows.front());
    auto* prompt = window_->files().compressToOtherPane();
    ASSERT_NE(prompt, nullptr);
    snap("compress-dialog.png");
    prompt->reject();
}

TEST_F(OperationScreenshots, ExtractReportListingRefusedMembers)
{
    const auto made =
        run({"python3", ORBISK_SOURCE_DIR "/tests/core/zip/hostile_archives.py", (home_ / "hostile").native()});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    fs::copy_file(home_ / "hostile/escapes.zip", home_ / "Projects/Downloaded.zip");
    auto& pane = window_->pane(Side::left);
    pane.reload();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !pane.isLoading(); }));
    for (std::size_t i = 0; i < pane.rows().size(); ++i)
        if (pane.rows()[i].name() == "Downloaded.zip")
            pane.setSelectionFromView({static_cast<int>(i)}, static_cast<int>(i));
    ASSERT_TRUE(window_->files().extractToOtherPane());
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->operations().runningCount() == 0; }));
    QMessageBox* alert = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (alert = window_->findChild<QMessageBox*>()) != nullptr; }));
    snap("extract-report-alert.png");
    alert->close();
}

} // namespace
} // namespace orbisk::test
