#include "operations/CrossVolumeMove.h"

#include "operations/TransferEngine.h"

namespace orbisk::CrossVolumeMove {

namespace fs = std::filesystem;

namespace {

/// A run that stopped as a whole (a full volume), in the engine's own words.
struct Stopped {
    std::string reason;
    [[nodiscard]] std::string errorDescription() const { return reason; }
};

} // namespace

Outcome move(const fs::path& from, const fs::path& to)
{
    CancellationToken cancellation;
    OperationProgressTracker progress;
    TransferEngine engine(TransferEngine::Kind::move, {from}, to.parent_path(), cancellation, progress);
    engine.targetNames[from] = to.filename().native();
    // The engine is only asked when a rename cannot do: also on a bind mount of one volume.
    engine.forceCopyThenDelete = true;
    // A place taken in the meantime is left alone, never replaced or merged into.
    engine.conflictPolicy = ConflictChoice::skip;
    auto report = engine.run();

    Outcome outcome;
    outcome.placeTaken = !report.skipped.empty();
    outcome.arrived = !report.completed.empty(); // one source, never merged: at most its own entry
    outcome.problems = std::move(report.failures);
    if (report.abortReason)
        outcome.problems.push_back(ItemFailure{from, Stopped{*report.abortReason}});
    return outcome;
}

} // namespace orbisk::CrossVolumeMove
