#include "operations/RunningOperation.h"

#include "dialogs/ConflictDialog.h"
#include "dialogs/ProgressPanel.h"
#include "dialogs/ReportAlertBox.h"
#include "operations/FileUndoCenter.h"
#include "platform/Trash.h"
#include "support/L10n.h"

#include <condition_variable>
#include <exception>
#include <optional>

namespace orbisk {

/// A clash on its way from the worker to the user and back. The first answer counts.
struct ConflictQuestion {
    explicit ConflictQuestion(ConflictDetails clash) : details(std::move(clash)) {}

    void give(ConflictDecision decision)
    {
        {
            std::lock_guard guard(lock);
            if (answer)
                return;
            answer = decision;
        }
        answered.notify_all();
    }
    [[nodiscard]] bool isAnswered()
    {
        std::lock_guard guard(lock);
        return answer.has_value();
    }
    ConflictDecision wait()
    {
        std::unique_lock guard(lock);
        answered.wait(guard, [this] { return answer.has_value(); });
        return *answer;
    }

    const ConflictDetails details;
    std::mutex lock;
    std::condition_variable answered;
    std::optional<ConflictDecision> answer;
};

RunningOperation::RunningOperation(OperationRunner& runner, Texts texts, QWidget* window, OperationRunner::Work work,
                                   OperationRunner::Completion completion, RunOptions options)
    : runner_(runner), texts_(std::move(texts)), window_(window), work_(std::move(work)),
      completion_(std::move(completion)), options_(std::move(options)), token_(std::make_shared<CancellationToken>()),
      tracker_(std::make_shared<OperationProgressTracker>())
{
    panelDelay_.setSingleShot(true);
    connect(&panelDelay_, &QTimer::timeout, this, &RunningOperation::showPanel);
    connect(&poll_, &QTimer::timeout, this, [this] {
        if (panel_)
            panel_->showProgress(tracker_->snapshot());
    });
}

RunningOperation::~RunningOperation()
{
    {
        std::lock_guard guard(questionLock_);
        closing_ = true;
    }
    cancel();
    if (worker_.joinable())
        worker_.join();
    delete panel_.data();
    delete dialog_.data();
}

void RunningOperation::start()
{
    const Trash trash = runner_.undoCenter().trash();
    worker_ = std::jthread([this, trash] {
        OperationContext context{
            *token_, *tracker_, [this](const NameConflict& conflict) { return ask(conflict); },
            [trash](const std::filesystem::path& item) -> std::expected<std::optional<std::filesystem::path>, int> {
                auto moved = trash.moveToTrash(item);
                if (!moved)
                    return std::unexpected(moved.error());
                return std::optional<std::filesystem::path>(std::move(*moved));
            }};
        OperationReport report;
        // Nothing may escape the worker: whatever goes wrong ends up in the report.
        try {
            report = work_(context);
        } catch (const std::exception& error) {
            report.abortReason = L(translate("Orbisk", "An unexpected error stopped the operation: %@"), error.what());
        } catch (...) {
            report.abortReason = translate("Orbisk", "An unexpected error stopped the operation.");
        }
        QMetaObject::invokeMethod(
            this, [this, report = std::move(report)]() mutable { finish(std::move(report)); }, Qt::QueuedConnection);
    });
    panelDelay_.start(runner_.timings().panelDelayMs);
}

void RunningOperation::cancel()
{
    token_->cancel();
    std::shared_ptr<ConflictQuestion> open;
    {
        std::lock_guard guard(questionLock_);
        open = question_;
    }
    if (open)
        open->give({ConflictChoice::cancel, false});
    if (dialog_)
        dialog_->close();
}

ConflictDecision RunningOperation::ask(const NameConflict& conflict)
{
    auto question = std::make_shared<ConflictQuestion>(ConflictDetails::of(conflict));
    {
        std::lock_guard guard(questionLock_);
        if (closing_ || token_->isCancelled())
            return {ConflictChoice::cancel, false};
        question_ = question;
    }
    QMetaObject::invokeMethod(
        this, [this, question] { showQuestion(question); }, Qt::QueuedConnection);
    const auto decision = question->wait();
    std::lock_guard guard(questionLock_);
    question_.reset();
    return decision;
}

void RunningOperation::showQuestion(const std::shared_ptr<ConflictQuestion>& question)
{
    if (question->isAnswered())
        return;
    auto* dialog = new ConflictDialog(question->details, window_);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &ConflictDialog::answered, this,
            [question](ConflictDecision decision) { question->give(decision); });
    dialog_ = dialog;
    dialog->open();
    // A progress panel may hold the keyboard by now; the question needs it for Return and Escape.
    dialog->raise();
    dialog->activateWindow();
}

void RunningOperation::showPanel()
{
    if (finished_ || panel_)
        return;
    panel_ = new ProgressPanel(texts_.title, texts_.detail, options_.cancellable, window_);
    panel_->onCancel = [this] { cancel(); };
    panel_->showProgress(tracker_->snapshot());
    // An open clash question keeps the keyboard; otherwise the panel takes it, so that Escape cancels.
    const bool asking = dialog_ && dialog_->isVisible();
    panel_->setAttribute(Qt::WA_ShowWithoutActivating, asking);
    panel_->show();
    // Placed once shown: only then has the layout given it its final size.
    panel_->place(runner_.panelSlot(this));
    if (asking) {
        dialog_->raise();
        dialog_->activateWindow();
    } else {
        panel_->activateWindow();
    }
    poll_.start(runner_.timings().pollIntervalMs);
}

void RunningOperation::finish(OperationReport report)
{
    finished_ = true;
    panelDelay_.stop();
    poll_.stop();
    if (worker_.joinable())
        worker_.join();
    if (panel_) {
        // The keyboard goes back to the window the panel took it from.
        if (panel_->isActiveWindow() && window_)
            window_->activateWindow();
        panel_->deleteLater();
    }
    if (dialog_)
        dialog_->close();

    if (!options_.undoName.empty()) {
        UndoRecord record{options_.undoName, std::move(options_.changesBefore)};
        record.changes.insert(record.changes.end(), report.undoChanges.begin(), report.undoChanges.end());
        runner_.undoCenter().record(std::move(record));
    }
    ReportAlertBox::present(report, texts_.verb, window_);
    if (completion_)
        completion_(report);
    runner_.done(this);
}

} // namespace orbisk
