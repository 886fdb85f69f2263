// The runner driven as a user would: clash dialogs answered by clicks, Cancel in the panel, alerts.
#include "operations/OperationRunner.h"
#include "dialogs/ConflictDialog.h"
#include "dialogs/ProgressPanel.h"
#include "operations/FileUndoCenter.h"
#include "platform/Trash.h"
#include "support/TempTree.h"

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <memory>
#include <optional>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;

class OperationRunnerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        window_.resize(900, 600);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    /// Copies sources into the folder, remembering the report the completion receives.
    void copy(std::vector<fs::path> sources, const fs::path& into, TransferRequest request = {})
    {
        request.kind = TransferEngine::Kind::copy;
        request.sources = std::move(sources);
        request.into = into;
        report_.reset();
        runner_->transfer(std::move(request), &window_, [this](const OperationReport& report) { report_ = report; });
    }
    [[nodiscard]] bool idle()
    {
        return QTest::qWaitFor([this] { return runner_->runningCount() == 0; }, 20000);
    }
    ConflictDialog* waitForDialog()
    {
        ConflictDialog* found = nullptr;
        // A dialog that never comes is reported by the caller's check for null.
        (void)QTest::qWaitFor([&] {
            found = window_.findChild<ConflictDialog*>();
            return found && found->isVisible();
        });
        return found && found->isVisible() ? found : nullptr;
    }
    std::vector<QMessageBox*> alerts()
    {
        std::vector<QMessageBox*> shown;
        for (auto* box : window_.findChildren<QMessageBox*>())
            if (box->isVisible())
                shown.push_back(box);
        return shown;
    }
    void closeAlerts()
    {
        for (auto* box : alerts())
            box->close();
    }
    static bool hasLabel(QWidget* widget, const QString& text)
    {
        for (const auto* label : widget->findChildren<QLabel*>())
            if (label->text() == text)
                return true;
        return false;
    }

    TempTree tree_;
    FileUndoCenter undo_{std::make_shared<const Trash>(tree_ / "Trash", ::getuid())};
    std::unique_ptr<OperationRunner> runner_ = std::make_unique<OperationRunner>(undo_, RunnerTimings{400, 10});
    QWidget window_;
    std::optional<OperationReport> report_;
};

TEST_F(OperationRunnerTest, EachClashAnswerReachesTheEngineFromTheDialog)
{
    struct Row {
        ConflictChoice choice;
        std::string existingAfter;
        bool keptBoth;
        bool restCopied;
        bool cancelled;
    };
    const Row rows[] = {
        {ConflictChoice::replace, "new", false, true, false},
        {ConflictChoice::keepBoth, "old", true, true, false},
        {ConflictChoice::skip, "old", false, true, false},
        {ConflictChoice::cancel, "old", false, false, true},
    };
    int index = 0;
    for (const auto& row : rows) {
        const std::string set = "set" + std::to_string(index++);
        SCOPED_TRACE(set);
        const auto src = tree_.folder(set + "/src");
        const auto dst = tree_.folder(set + "/dst");
        tree_.file(set + "/src/a.txt", "new");
        tree_.file(set + "/src/b.txt", "b");
        tree_.file(set + "/dst/a.txt", "old");
        const int recordedBefore = undo_.recorded();

        copy({src / "a.txt", src / "b.txt"}, dst);
        auto* dialog = waitForDialog();
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(hasLabel(dialog, QStringLiteral("An item named “a.txt” already exists in “dst”.")));
        EXPECT_EQ(dialog->button(ConflictChoice::merge), nullptr) << "two files cannot be merged";
        ASSERT_NE(dialog->button(row.choice), nullptr);
        QTest::mouseClick(dialog->button(row.choice), Qt::LeftButton);
        ASSERT_TRUE(idle());

        ASSERT_TRUE(report_);
        EXPECT_EQ(report_->cancelled, row.cancelled);
        EXPECT_EQ(tree_.read(set + "/dst/a.txt"), row.existingAfter);
        EXPECT_EQ(tree_.exists(set + "/dst/a 2.txt"), row.keptBoth);
        EXPECT_EQ(tree_.exists(set + "/dst/b.txt"), row.restCopied);
        EXPECT_TRUE(alerts().empty()) << "neither a clean run nor a plain cancellation is an alert";
        EXPECT_EQ(undo_.recorded(), recordedBefore + (row.cancelled ? 0 : 1));
        if (row.choice == ConflictChoice::replace) {
            EXPECT_EQ(tree_.read("Trash/files/a.txt"), "old") << "the replaced item goes to the Trash";
            EXPECT_EQ(undo_.undoText(), "Undo Copy 2 Items");
        }
    }
}

TEST_F(OperationRunnerTest, FolderClashesOfferMergeAndOneAnswerCanCoverTheRest)
{
    tree_.file("src/F/inner.txt", "in");
    tree_.file("dst/F/kept.txt", "kept");
    copy({tree_ / "src/F"}, tree_ / "dst");
    auto* dialog = waitForDialog();
    ASSERT_NE(dialog, nullptr);
    ASSERT_NE(dialog->button(ConflictChoice::merge), nullptr);
    QTest::mouseClick(dialog->button(ConflictChoice::merge), Qt::LeftButton);
    ASSERT_TRUE(idle());
    EXPECT_TRUE(tree_.exists("dst/F/inner.txt"));
    EXPECT_TRUE(tree_.exists("dst/F/kept.txt"));

    for (const auto* name : {"a", "b", "c"}) {
        tree_.file(std::string("src2/") + name, "new");
        tree_.file(std::string("dst2/") + name, "old");
    }
    copy({tree_ / "src2/a", tree_ / "src2/b", tree_ / "src2/c"}, tree_ / "dst2");
    dialog = waitForDialog();
    ASSERT_NE(dialog, nullptr);
    dialog->applyToRemaining()->setChecked(true);
    QTest::mouseClick(dialog->button(ConflictChoice::skip), Qt::LeftButton);
    // No second question: the run ends on its own.
    ASSERT_TRUE(idle());
    ASSERT_TRUE(report_);
    EXPECT_EQ(report_->skipped.size(), 3U);
    for (const auto* name : {"a", "b", "c"})
        EXPECT_EQ(tree_.read(std::string("dst2/") + name), "old");
}

TEST_F(OperationRunnerTest, TheSameItemIsOfferedOnlyTheSafeChoices)
{
    tree_.file("here/a.txt", "a");
    copy({tree_ / "here/a.txt"}, tree_ / "here");
    auto* dialog = waitForDialog();
    ASSERT_NE(dialog, nullptr);
    for (const auto choice :
         {ConflictChoice::replace, ConflictChoice::replaceIfOlder, ConflictChoice::replaceIfDifferent,
          ConflictChoice::renameExisting, ConflictChoice::merge})
        EXPECT_EQ(dialog->button(choice), nullptr) << rawValue(choice);
    for (const auto choice : {ConflictChoice::keepBoth, ConflictChoice::skip, ConflictChoice::cancel})
        EXPECT_NE(dialog->button(choice), nullptr) << rawValue(choice);
    const auto expected = QStringLiteral("Source and destination are the same item:\n%1\n\nKeep Both makes "
                                         "a copy with a new name. Nothing is overwritten.")
                              .arg(QString::fromStdString((tree_ / "here/a.txt").native()));
    EXPECT_TRUE(hasLabel(dialog, expected));
    QTest::mouseClick(dialog->button(ConflictChoice::keepBoth), Qt::LeftButton);
    ASSERT_TRUE(idle());
    EXPECT_EQ(tree_.read("here/a 2.txt"), "a");
    EXPECT_EQ(tree_.read("here/a.txt"), "a");
}

TEST_F(OperationRunnerTest, CancelInThePanelStopsInsideALargeFileAndLeavesNothing)
{
    runner_->setTimings({50, 10});
    tree_.file("src/large.bin", std::string(std::size_t{128} << 20, 'x'));
    const auto dst = tree_.folder("dst");
    TransferRequest request;
    // Small chunks keep the copy inside the file long enough for the click.
    request.copyOptions.chunkBytes = 4096;
    request.copyOptions.firstMethod = CopyMethod::copyFileRange;
    copy({tree_ / "src/large.bin"}, dst, request);

    ProgressPanel* panel = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        panel = window_.findChild<ProgressPanel*>();
        return panel && panel->isVisible() && panel->bar()->maximum() > 0 && panel->bar()->value() > 0;
    }));
    EXPECT_LT(panel->bar()->value(), panel->bar()->maximum());
    EXPECT_TRUE(hasLabel(panel, QStringLiteral("Copying “large.bin”")));
    QTest::mouseClick(panel->cancelButton(), Qt::LeftButton);
    ASSERT_TRUE(idle());

    ASSERT_TRUE(report_);
    EXPECT_TRUE(report_->cancelled);
    EXPECT_TRUE(report_->failures.empty());
    EXPECT_TRUE(fs::is_empty(dst)) << "the partial copy, hidden or not, is gone";
    EXPECT_EQ(fs::file_size(tree_ / "src/large.bin"), std::uintmax_t{128} << 20);
    EXPECT_TRUE(alerts().empty());
    EXPECT_EQ(undo_.recorded(), 0);
    EXPECT_TRUE(QTest::qWaitFor([this] { return window_.findChild<ProgressPanel*>() == nullptr; }));
}

TEST_F(OperationRunnerTest, PanelsOnlyForLastingRunsEachPlacedOnTheWindow)
{
    // A run that ends at once never shows a panel, however its report reads.
    bool sawPanel = false;
    runner_->run(
        "Quick", "Copy", "", &window_, [](OperationContext&) { return OperationReport{}; },
        [](const OperationReport&) {});
    ASSERT_TRUE(QTest::qWaitFor([&] {
        sawPanel |= window_.findChild<ProgressPanel*>() != nullptr;
        return runner_->runningCount() == 0;
    }));
    EXPECT_FALSE(sawPanel);

    // Two lasting runs at once: a panel each, centred on the window and one below the other.
    runner_->setTimings({0, 10});
    std::atomic<bool> release = false;
    auto lasting = [&release](OperationContext& context) {
        while (!release && !context.token.isCancelled())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return OperationReport{};
    };
    runner_->run("First", "Copy", "", &window_, lasting, {});
    runner_->run("Second", "Copy", "", &window_, lasting, {});
    QList<ProgressPanel*> panels;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        panels = window_.findChildren<ProgressPanel*>();
        return panels.size() == 2 && panels[0]->isVisible() && panels[1]->isVisible();
    }));
    const auto frame = window_.frameGeometry();
    for (const auto* panel : panels)
        EXPECT_NEAR(panel->geometry().center().x(), frame.center().x(), 2);
    const int upper = std::min(panels[0]->y(), panels[1]->y());
    const int lower = std::max(panels[0]->y(), panels[1]->y());
    EXPECT_EQ(upper, frame.top() + 80);
    EXPECT_GE(lower, upper + panels[0]->height());
    release = true;
    ASSERT_TRUE(idle());
}

TEST_F(OperationRunnerTest, ProblemsBecomeOneAlertWithTheVerb)
{
    tree_.file("src/a.txt", "a");
    copy({tree_ / "src/a.txt", tree_ / "src/gone.txt", tree_ / "src/also-gone.txt"}, tree_.folder("dst"));
    ASSERT_TRUE(idle());
    const auto shown = alerts();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0]->text(), QStringLiteral("Copy finished with 2 problems."));
    EXPECT_TRUE(shown[0]->informativeText().startsWith(QStringLiteral("Completed: 1. Skipped: 0. Failed: 2.\n• ")));
    EXPECT_TRUE(shown[0]->informativeText().contains(QStringLiteral("“gone.txt” no longer exists.")));
    EXPECT_EQ(undo_.undoText(), "Undo Copy 3 Items") << "what was done can still be undone";
    closeAlerts();
}

TEST_F(OperationRunnerTest, ClosingTheRunnerWhileAskingCancelsAndWaitsForTheWorker)
{
    tree_.file("src/a.txt", "new");
    tree_.file("src/b.txt", "b");
    tree_.file("dst/a.txt", "old");
    bool completed = false;
    TransferRequest request;
    request.sources = {tree_ / "src/a.txt", tree_ / "src/b.txt"};
    request.into = tree_ / "dst";
    runner_->transfer(request, &window_, [&completed](const OperationReport&) { completed = true; });
    ASSERT_NE(waitForDialog(), nullptr);
    runner_.reset(); // must not hang on the worker that waits for an answer
    QTest::qWait(20);
    EXPECT_FALSE(completed);
    EXPECT_EQ(window_.findChild<ConflictDialog*>(), nullptr);
    EXPECT_EQ(tree_.read("dst/a.txt"), "old");
    EXPECT_FALSE(tree_.exists("dst/b.txt"));
}

} // namespace
} // namespace orbisk::test
