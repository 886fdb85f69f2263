#include "operations/OperationRunner.h"

#include "operations/FileUndoCenter.h"
#include "operations/RunningOperation.h"
#include "operations/TrashOperation.h"
#include "platform/Trash.h"
#include "support/L10n.h"

#include <algorithm>

namespace orbisk {
namespace {

std::string nameOf(const std::filesystem::path& item)
{
    const auto name = item.filename().native();
    return name.empty() ? item.native() : name;
}

std::string folderOf(const std::filesystem::path& item)
{
    const auto parent = item.parent_path();
    return parent.empty() ? item.native() : parent.native();
}

} // namespace

OperationRunner::OperationRunner(FileUndoCenter& undo, RunnerTimings timings, QObject* parent)
    : QObject(parent), undo_(undo), timings_(timings)
{
    undo_.attachRunner(this);
}

OperationRunner::~OperationRunner()
{
    undo_.attachRunner(nullptr);
    // Cancel them all first, so that the workers wind down together rather than one by one.
    for (auto& operation : running_)
        operation->cancel();
    running_.clear();
}

void OperationRunner::run(std::string title, std::string verb, std::string detail, QWidget* window, Work work,
                          Completion completion, RunOptions options)
{
    auto operation = std::make_unique<RunningOperation>(
        *this, RunningOperation::Texts{std::move(title), std::move(verb), std::move(detail)}, window, std::move(work),
        std::move(completion), std::move(options));
    auto* started = operation.get();
    running_.push_back(std::move(operation));
    started->start();
}

void OperationRunner::transfer(TransferRequest request, QWidget* window, Completion completion)
{
    const bool move = request.kind == TransferEngine::Kind::move;
    const auto count = request.sources.size();
    const std::string single = count == 1 ? nameOf(request.sources.front()) : std::string();
    if (request.title.empty()) {
        if (move)
            request.title = count == 1 ? L(translate("Orbisk", "Moving “%@”"), single)
                                       : L(translate("Orbisk", "Moving %lld items"), count);
        else
            request.title = count == 1 ? L(translate("Orbisk", "Copying “%@”"), single)
                                       : L(translate("Orbisk", "Copying %lld items"), count);
    }
    if (request.detail.empty() && !request.sources.empty())
        request.detail = L(translate("Orbisk", "From: %@"), folderOf(request.sources.front()));
    if (request.verb.empty())
        request.verb = move ? translate("Orbisk", "Move") : translate("Orbisk", "Copy");
    if (request.undoName.empty()) {
        if (move)
            request.undoName = count == 1 ? L(translate("Orbisk", "Move “%@”"), single)
                                          : L(translate("Orbisk", "Move %lld Items"), count);
        else
            request.undoName = count == 1 ? L(translate("Orbisk", "Copy “%@”"), single)
                                          : L(translate("Orbisk", "Copy %lld Items"), count);
    }

    RunOptions options;
    options.undoName = std::move(request.undoName);
    options.changesBefore = std::move(request.changesBefore);
    auto title = std::move(request.title);
    auto verb = std::move(request.verb);
    auto detail = std::move(request.detail);
    Work work = [request = std::move(request)](OperationContext& context) {
        TransferEngine engine(request.kind, request.sources, request.into, context.token, context.progress);
        engine.targetNames = request.names;
        engine.conflictPolicy = request.conflictPolicy;
        engine.mergeFolders = request.mergeFolders;
        engine.forceCopyThenDelete = request.forceCopyThenDelete;
        engine.copyOptions = request.copyOptions;
        engine.beforeSourceRemoval = request.beforeSourceRemoval;
        engine.conflictHandler = context.askConflict;
        engine.replacedItemDisposer = context.disposeReplaced;
        return engine.run();
    };
    run(std::move(title), std::move(verb), std::move(detail), window, std::move(work), std::move(completion),
        std::move(options));
}

void OperationRunner::trash(std::vector<std::filesystem::path> items, QWidget* window, Completion completion,
                            std::string undoName)
{
    const auto count = items.size();
    auto title = count == 1 ? translate("Orbisk", "Moving to the Trash")
                            : L(translate("Orbisk", "Moving %lld items to the Trash"), count);
    std::string detail = items.empty() ? std::string() : L(translate("Orbisk", "From: %@"), folderOf(items.front()));
    RunOptions options;
    options.undoName = !undoName.empty() ? std::move(undoName)
                       : count == 1      ? L(translate("Orbisk", "Move “%@” to the Trash"), nameOf(items.front()))
                                         : L(translate("Orbisk", "Move %lld Items to the Trash"), count);
    const Trash bin = undo_.trash();
    Work work = [items = std::move(items), bin](OperationContext& context) {
        return TrashOperation::run(items, context.token, context.progress, bin);
    };
    run(std::move(title), translate("Orbisk", "Move to Trash"), std::move(detail), window, std::move(work),
        std::move(completion), std::move(options));
}

void OperationRunner::done(RunningOperation* operation)
{
    const auto found =
        std::ranges::find_if(running_, [operation](const auto& held) { return held.get() == operation; });
    if (found == running_.end())
        return;
    found->release();
    running_.erase(found);
    // It is still on the call stack: it goes when control is back in the event loop.
    operation->deleteLater();
    emit finished();
}

int OperationRunner::panelSlot(const RunningOperation* operation) const
{
    int slot = 0;
    for (const auto& held : running_) {
        if (held.get() == operation)
            break;
        if (held->panel())
            ++slot;
    }
    return slot;
}

} // namespace orbisk
