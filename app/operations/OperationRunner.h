// Runs file operations on worker threads: progress panel, clash questions, report alert, undo record.
#pragma once

#include "operations/CancellationToken.h"
#include "operations/ConflictChoice.h"
#include "operations/OperationProgressTracker.h"
#include "operations/OperationReport.h"
#include "operations/TransferEngine.h"
#include "operations/UndoChange.h"

#include <QObject>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QWidget;

namespace orbisk {

class FileUndoCenter;
class RunningOperation;

/// How long a run may last before its panel appears, and how often the panel reads the progress.
struct RunnerTimings {
    int panelDelayMs = 400;
    int pollIntervalMs = 100;
};

/// What a piece of work is handed on its worker thread. Everything here may be used from there.
struct OperationContext {
    CancellationToken& token;
    OperationProgressTracker& progress;
    /// Asks the user about a clash on the main thread and blocks until the answer comes; answers
    /// cancel at once when the run was cancelled or the runner is closing.
    TransferEngine::ConflictHandler askConflict;
    /// Moves an item being replaced to the undo center's Trash (for TransferEngine::replacedItemDisposer).
    TransferEngine::ReplacedItemDisposer disposeReplaced;
};

/// Everything a copy or move needs. Empty texts get the usual ones: "Copying “name”" / "Copying
/// %lld items" (Moving … for a move) as title, "From: folder" as detail, "Copy"/"Move" as verb,
/// and an undo name such as Copy “name” or Move 3 Items.
struct TransferRequest {
    TransferEngine::Kind kind = TransferEngine::Kind::copy;
    std::vector<std::filesystem::path> sources;
    std::filesystem::path into;
    /// New names by source (a rename or mask target); others keep their own.
    std::map<std::filesystem::path, std::string> names;
    /// A standing answer to every clash; absent means ask the user.
    std::optional<ConflictChoice> conflictPolicy;
    bool mergeFolders = false;
    bool forceCopyThenDelete = false;
    /// How regular files are copied (chunk size between progress and cancellation checks).
    CopyOptions copyOptions;
    /// Called on the worker thread before a copy-then-delete move removes its sources.
    std::function<void()> beforeSourceRemoval;
    /// Changes made before the transfer that belong to the same undo step (the folder that New
    /// Folder with Selection made for the items); they come first in the record.
    std::vector<UndoChange> changesBefore;
    std::string title;
    std::string detail;
    std::string verb;
    std::string undoName;
};

/// Options of a plain run.
struct RunOptions {
    /// When not empty, the report's undo changes become one undo record of this name.
    std::string undoName;
    /// Changes made before the work that belong to the same undo step; they come first.
    std::vector<UndoChange> changesBefore;
    /// Whether the panel offers Cancel (work that never looks at the token should say false).
    bool cancellable = true;
};

/// One per window (not a singleton): starts runs and keeps each alive until it has finished. Every
/// public function is called on the main thread. Several runs may go on at once, each with its
/// own panel. A run: the work runs on its own thread with a fresh token and tracker; when it lasts
/// longer than panelDelayMs a progress panel appears on the window (Cancel cancels the token) and
/// reads the tracker every pollIntervalMs; when the work returns, the panel closes, the undo
/// changes are recorded with the undo center, the report is shown by ReportAlert's rules (nothing
/// for a clean success or a plain cancellation), and then the completion is called.
class OperationRunner : public QObject {
    Q_OBJECT
public:
    using Work = std::function<OperationReport(OperationContext&)>;
    /// Called on the main thread with the report once it has been presented.
    using Completion = std::function<void(const OperationReport&)>;

    /// The undo center receives the records and runs its reverts through this runner.
    explicit OperationRunner(FileUndoCenter& undo, RunnerTimings timings = {}, QObject* parent = nullptr);
    /// Cancels every run, answers open clash questions with cancel and waits for the workers;
    /// completions of unfinished runs are not called.
    ~OperationRunner() override;

    void setTimings(RunnerTimings timings) { timings_ = timings; }
    [[nodiscard]] const RunnerTimings& timings() const { return timings_; }
    [[nodiscard]] FileUndoCenter& undoCenter() const { return undo_; }

    /// Runs work on a worker thread. title heads the panel, detail is its second line, verb names
    /// the operation in the report alert ("Copy", "Undo"). window (not owned) carries the panel and
    /// the alerts; it may be null.
    void run(std::string title, std::string verb, std::string detail, QWidget* window, Work work, Completion completion,
             RunOptions options = {});

    /// Copies or moves through a TransferEngine with the request's settings, asking the user about
    /// clashes and sending replaced items to the undo center's Trash.
    void transfer(TransferRequest request, QWidget* window, Completion completion);

    /// Moves items to the undo center's Trash ("Moving to the Trash" / "Moving %lld items to the
    /// Trash"). An empty undoName gets Move “name” to the Trash or Move %lld Items to the Trash.
    void trash(std::vector<std::filesystem::path> items, QWidget* window, Completion completion,
               std::string undoName = {});

    /// How many runs have not finished yet.
    [[nodiscard]] std::size_t runningCount() const { return running_.size(); }

signals:
    /// A run finished and its completion was called.
    void finished();

private:
    friend class RunningOperation;
    void done(RunningOperation* operation);
    [[nodiscard]] int panelSlot(const RunningOperation* operation) const;

    FileUndoCenter& undo_;
    RunnerTimings timings_;
    std::vector<std::unique_ptr<RunningOperation>> running_;
};

} // namespace orbisk
