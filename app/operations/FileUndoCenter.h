// The history of file operations for Edit › Undo and Redo, apart from any text field's own history.
#pragma once

#include "operations/FileUndo.h"
#include "operations/UndoRecord.h"

#include <QObject>

#include <deque>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace orbisk {

class OperationRunner;
class Trash;

/// One per window (not a singleton). Undo and redo run FileUndo::revert through the runner, one at
/// a time in the order asked: two quick undos revert the last two records in order, the second
/// starting only when the first has finished. What a revert could not do is shown as a report.
/// The history lives in memory only. Every function is called on the main thread.
class FileUndoCenter : public QObject {
    Q_OBJECT
public:
    /// trash is where reverts, replacements and Move to Trash send items; null means the current
    /// user's Trash.
    explicit FileUndoCenter(std::shared_ptr<const Trash> trash = nullptr, QObject* parent = nullptr);
    ~FileUndoCenter() override;

    /// The runner that reverts go through; the runner attaches itself when it is made.
    void attachRunner(OperationRunner* runner) { runner_ = runner; }
    /// The window that carries the reverts' panels and alerts (not owned).
    void setWindow(QWidget* window) { window_ = window; }

    [[nodiscard]] const Trash& trash() const { return *trash_; }
    /// The Trash as FileUndo takes it.
    [[nodiscard]] FileUndo::TrashService trashService() const;

    /// Adds record as the newest undo step and forgets every redo step; an empty record is ignored.
    void record(UndoRecord record);
    /// How many records were added.
    [[nodiscard]] int recorded() const { return recorded_; }

    [[nodiscard]] bool canUndo() const { return !undoSteps_.empty(); }
    [[nodiscard]] bool canRedo() const { return !redoSteps_.empty(); }
    /// The Edit menu's texts: Undo followed by the name of the step, or just "Undo" without one.
    [[nodiscard]] std::string undoText() const;
    [[nodiscard]] std::string redoText() const;
    /// The names of the steps, oldest first.
    [[nodiscard]] std::vector<std::string> undoNames() const;
    [[nodiscard]] std::vector<std::string> redoNames() const;

    /// Takes the newest undo step off the history and queues its revert; its inverse becomes the
    /// newest redo step when the revert has finished, and what it could not reverse stays an undo
    /// step in its old place. Does nothing without a step.
    void undo();
    /// The same for the newest redo step; its inverse becomes an undo step again.
    void redo();
    /// Whether a revert is running or waiting.
    [[nodiscard]] bool isBusy() const { return running_ || !queue_.empty(); }

signals:
    /// The steps or their names changed: the Edit menu follows.
    void historyChanged();
    /// A revert finished (after its report was shown): the panes refresh.
    void reverted(const std::vector<UndoChange>& changes);

private:
    struct Step {
        UndoRecord record;
        std::size_t position = 0; ///< where in its history it stood when it was taken off
    };
    struct Job {
        std::shared_ptr<Step> step;
        bool isRedo = false;
        int epoch = 0;
    };
    void enqueue(Job job);
    void next();

    std::shared_ptr<const Trash> trash_;
    OperationRunner* runner_ = nullptr;
    QWidget* window_ = nullptr;
    std::vector<std::shared_ptr<Step>> undoSteps_;
    std::vector<std::shared_ptr<Step>> redoSteps_;
    std::deque<Job> queue_;
    bool running_ = false;
    int recorded_ = 0;
    /// Raised by every new record: a revert queued before it must not bring back redo steps.
    int epoch_ = 0;
};

} // namespace orbisk
