// Pictures of the operation dialogs over the real window for docs/screenshots, taken only when
// ORBISK_SCREENSHOT_DIR names a folder (run under Xvfb with QT_QPA_PLATFORM=xcb).
#include "AppSettings.h"
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

class OperationScreenshots : public ::testing::Test {
protected:
    void SetUp() override
    {
        const auto folder = qgetenv("ORBISK_SCREENSHOT_DIR");
        if (folder.isEmpty())
            GTEST_SKIP() << "set ORBISK_SCREENSHOT_DIR to take the pictures";
        output_ = folder.toStdString();
        home_.file("Projects/report.pdf", std::string(48'000, 'r'));
        home_.file("Projects/notes.txt", "new notes");
        home_.file("Projects/budget.ods", std::string(21'000, 'b'));
        home_.folder("Projects/Photos");
        home_.file("Backup/notes.txt", "old");
        home_.file("Backup/archive.zip", std::string(9'000, 'z'));
        home_.setModificationTime("Backup/notes.txt", 1'700'000'000);
        oldHome_ = qgetenv("HOME");
        qputenv("HOME", QByteArray::fromStdString(home_.root().native()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString((home_ / ".local/share").native()));
        settings_ = std::make_unique<AppSettings>(QString::fromStdString((config_.root() / "s.ini").native()));
        window_ = std::make_unique<MainWindow>(*settings_);
        window_->resize(1400, 900);
        window_->move(0, 0);
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
        window_->pane(Side::left).navigate(home_ / "Projects");
        window_->pane(Side::right).navigate(home_ / "Backup");
        ASSERT_TRUE(QTest::qWaitFor(
            [this] { return !window_->pane(Side::left).isLoading() && !window_->pane(Side::right).isLoading(); }));
    }
    void TearDown() override
    {
        window_.reset();
        if (!oldHome_.isNull())
            qputenv("HOME", oldHome_);
    }
    void snap(const char* name)
    {
        QTest::qWait(300);
        const auto picture = QGuiApplication::primaryScreen()->grabWindow(0);
        ASSERT_TRUE(picture.save(QString::fromStdString((output_ / name).native()), "PNG"));
    }
    void copy(std::vector<fs::path> sources, const fs::path& into, TransferRequest request = {})
    {
        request.sources = std::move(sources);
        request.into = into;
        window_->operations().transfer(std::move(request), window_.get(),
                                       [this](const OperationReport& report) { window_->showResults(report); });
    }

    fs::path output_;
    TempTree home_;
    TempTree config_;
    QByteArray oldHome_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<MainWindow> window_;
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
