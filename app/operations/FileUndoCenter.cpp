#include "operations/FileUndoCenter.h"

#include <algorithm>

#include "operations/FileOperationError.h"
#include "operations/OperationRunner.h"
#include "platform/Trash.h"
#include "support/L10n.h"

namespace orbisk {

FileUndoCenter::FileUndoCenter(std::shared_ptr<const Trash> trash, QObject* parent)
    : QObject(parent), trash_(trash ? std::move(trash) : std::make_shared<const Trash>(Trash::forCurrentUser()))
{
}

FileUndoCenter::~FileUndoCenter() = default;

FileUndo::TrashService FileUndoCenter::trashService() const
{
    return [trash = trash_](const std::filesystem::path& item) -> std::expected<std::filesystem::path, AnyError> {
        auto moved = trash->moveToTrash(item);
        if (moved)
            return *moved;
        if (moved.error() == ENOENT)
            return std::unexpected(AnyError(FileOperationError::itemMissing(item)));
        return std::unexpected(AnyError(FileOperationError::system(moved.error(), "move", item)));
    };
}

void FileUndoCenter::record(UndoRecord record)
{
    if (record.isEmpty())
        return;
    undoSteps_.push_back(std::make_shared<Step>(Step{std::move(record)}));
    redoSteps_.clear();
    ++recorded_;
    ++epoch_;
    emit historyChanged();
}

std::string FileUndoCenter::undoText() const
{
    return canUndo() ? L(translate("Orbisk", "Undo %@"), undoSteps_.back()->record.name) : translate("Orbisk", "Undo");
}

std::string FileUndoCenter::redoText() const
{
    return canRedo() ? L(translate("Orbisk", "Redo %@"), redoSteps_.back()->record.name) : translate("Orbisk", "Redo");
}

std::vector<std::string> FileUndoCenter::undoNames() const
{
    std::vector<std::string> names;
    for (const auto& step : undoSteps_)
        names.push_back(step->record.name);
    return names;
}

std::vector<std::string> FileUndoCenter::redoNames() const
{
    std::vector<std::string> names;
    for (const auto& step : redoSteps_)
        names.push_back(step->record.name);
    return names;
}

void FileUndoCenter::undo()
{
    if (undoSteps_.empty())
        return;
    auto step = std::move(undoSteps_.back());
    undoSteps_.pop_back();
    step->position = undoSteps_.size();
    emit historyChanged();
    enqueue({std::move(step), false, epoch_});
}

void FileUndoCenter::redo()
{
    if (redoSteps_.empty())
        return;
    auto step = std::move(redoSteps_.back());
    redoSteps_.pop_back();
    step->position = redoSteps_.size();
    emit historyChanged();
    enqueue({std::move(step), true, epoch_});
}

void FileUndoCenter::enqueue(Job job)
{
    queue_.push_back(std::move(job));
    next();
}

void FileUndoCenter::next()
{
    if (running_ || queue_.empty() || !runner_)
        return;
    auto job = std::move(queue_.front());
    queue_.pop_front();
    running_ = true;
    // The record is read only now: a redo queued while its undo was running reverts the inverse.
    const UndoRecord record = job.step->record;
    const auto verb = job.isRedo ? translate("Orbisk", "Redo") : translate("Orbisk", "Undo");
    const auto detail = job.isRedo ? L(translate("Orbisk", "Redoing “%@”"), record.name)
                                   : L(translate("Orbisk", "Undoing “%@”"), record.name);
    // What the revert could not reverse, handed from the worker to the completion.
    auto remaining = std::make_shared<UndoRecord>();
    auto work = [record, remaining, trash = trashService()](OperationContext& context) {
        context.progress.update([&record](OperationProgress& progress) {
            progress.phase = OperationProgress::Phase::working;
            progress.totalItems = static_cast<std::int64_t>(record.changes.size());
        });
        auto outcome = FileUndo::revert(record, trash);
        *remaining = std::move(outcome.remaining);
        auto report = FileUndo::reportOf(std::move(outcome));
        context.progress.update([&record](OperationProgress& progress) {
            progress.phase = OperationProgress::Phase::finished;
            progress.completedItems = static_cast<std::int64_t>(record.changes.size());
        });
        return report;
    };
    auto completion = [this, job, remaining](const OperationReport& report) {
        running_ = false;
        const std::size_t position = job.step->position;
        UndoRecord inverse{job.step->record.name, report.undoChanges};
        if (!inverse.isEmpty()) {
            job.step->record = std::move(inverse);
            if (job.isRedo)
                undoSteps_.push_back(job.step);
            else if (job.epoch == epoch_) // a newer operation has since ended the redo history
                redoSteps_.push_back(job.step);
        }
        // A step that could not be reversed (or only in part) is not used up: what is left of it
        // goes back where it was taken from, below any step recorded since, to be tried again.
        auto& steps = job.isRedo ? redoSteps_ : undoSteps_;
        if (!remaining->isEmpty() && (!job.isRedo || job.epoch == epoch_)) {
            auto left = std::make_shared<Step>(Step{std::move(*remaining), 0});
            steps.insert(steps.begin() + static_cast<std::ptrdiff_t>(std::min(position, steps.size())),
                         std::move(left));
        }
        emit historyChanged();
        emit reverted(report.undoChanges);
        next();
    };
    RunOptions options;
    options.cancellable = false;
    runner_->run(verb, verb, detail, window_, std::move(work), std::move(completion), std::move(options));
}

} // namespace orbisk
