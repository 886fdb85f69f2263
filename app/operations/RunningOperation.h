// One run of the operation runner: its worker thread, token, tracker, panel and open clash question.
#pragma once

#include "dialogs/ProgressPanel.h"
#include "operations/OperationRunner.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace orbisk {

class ConflictDialog;
struct ConflictQuestion;

/// Lives on the main thread from start() until the runner drops it after finishing. The worker
/// reaches back only through queued calls to this object and through the token, the tracker and
/// the open question, each behind its own lock.
class RunningOperation : public QObject {
    Q_OBJECT
public:
    struct Texts {
        std::string title;
        std::string verb;
        std::string detail;
    };

    RunningOperation(OperationRunner& runner, Texts texts, QWidget* window, OperationRunner::Work work,
                     OperationRunner::Completion completion, RunOptions options);
    /// Cancels, answers an open question with cancel and waits for the worker.
    ~RunningOperation() override;

    void start();
    /// Cancels the token and answers an open clash question with cancel.
    void cancel();

    [[nodiscard]] ProgressPanel* panel() const { return panel_; }
    [[nodiscard]] bool isFinished() const { return finished_; }

private:
    /// On the worker: hands the clash to the main thread and waits for the answer.
    ConflictDecision ask(const NameConflict& conflict);
    void showQuestion(const std::shared_ptr<ConflictQuestion>& question);
    void showPanel();
    void finish(OperationReport report);

    OperationRunner& runner_;
    Texts texts_;
    QPointer<QWidget> window_;
    OperationRunner::Work work_;
    OperationRunner::Completion completion_;
    RunOptions options_;
    std::shared_ptr<CancellationToken> token_;
    std::shared_ptr<OperationProgressTracker> tracker_;
    QPointer<ProgressPanel> panel_;
    QPointer<ConflictDialog> dialog_;
    QTimer panelDelay_;
    QTimer poll_;
    bool finished_ = false;

    std::mutex questionLock_;
    bool closing_ = false;
    std::shared_ptr<ConflictQuestion> question_;

    // Last, so that it is joined before anything the worker uses goes away.
    std::jthread worker_;
};

} // namespace orbisk
