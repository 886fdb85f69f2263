// Resolving a name clash: standing answers, the conflict handler, and what each choice means.
#include <cstdlib>

#include "operations/NameGenerator.h"
#include "operations/TransferEngine.h"
#include "support/Paths.h"
#include "support/Translate.h"

namespace orbisk {

namespace fs = std::filesystem;

namespace {

std::int64_t nanoseconds(const struct timespec& time)
{
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

// Whether replaceIfDifferent should replace. Times closer than 2 seconds count as equal on
// purpose: file systems with coarse timestamps (FAT keeps 2 seconds) would otherwise make every
// earlier copy look different and be replaced again.
bool differ(const fs::path& source, const fs::path& existing)
{
    struct stat a {};
    struct stat b {};
    if (::lstat(source.c_str(), &a) != 0 || ::lstat(existing.c_str(), &b) != 0)
        return true;
    if ((a.st_mode & S_IFMT) != (b.st_mode & S_IFMT))
        return true;
    if (!S_ISDIR(a.st_mode) && a.st_size != b.st_size)
        return true;
    return std::llabs(nanoseconds(a.st_mtim) - nanoseconds(b.st_mtim)) >= 2'000'000'000;
}

// Whether replaceIfOlder should replace: only when both times are known and the existing item's
// is strictly earlier.
bool existingIsOlder(const fs::path& source, const fs::path& existing)
{
    struct stat a {};
    struct stat b {};
    if (::lstat(source.c_str(), &a) != 0 || ::lstat(existing.c_str(), &b) != 0)
        return false;
    return nanoseconds(b.st_mtim) < nanoseconds(a.st_mtim);
}

} // namespace

TransferEngine::Resolution TransferEngine::resolveClash(const fs::path& source, const struct stat& sourceStatus,
                                                        const fs::path& existing, const struct stat& existingStatus,
                                                        std::int64_t itemCount)
{
    const bool sameItem = sourceStatus.st_dev == existingStatus.st_dev && sourceStatus.st_ino == existingStatus.st_ino;
    const bool existingHoldsSource = sameItem || Paths::isSameOrInside(source, existing);
    const bool sourceHoldsExisting = Paths::isSameOrInside(existing, source);
    const bool sourceIsDirectory = S_ISDIR(sourceStatus.st_mode);
    const bool existingIsDirectory = S_ISDIR(existingStatus.st_mode);
    const bool canMerge = !existingHoldsSource && !sourceHoldsExisting && sourceIsDirectory && existingIsDirectory;
    if (canMerge && mergeFolders)
        return {Resolution::Kind::merge, existing};

    std::optional<ConflictChoice> choice = rememberedChoice_ ? rememberedChoice_ : conflictPolicy;
    if (!choice || (sameItem && !isSafeForSameItem(*choice)))
        choice = decide({source, existing, sameItem, sourceIsDirectory, existingIsDirectory, canMerge});

    const std::string existingName = existing.filename().native();
    const std::string contained = translate("Orbisk", "it is the item being copied or contains it.");
    switch (*choice) {
    case ConflictChoice::skip: skip(source, itemCount); return {};
    case ConflictChoice::cancel:
        cancellation_.cancel();
        report_.cancelled = true;
        return {};
    case ConflictChoice::keepBoth: {
        const fs::path folder = existing.parent_path();
        const auto name =
            NameGenerator::keepBothName(existingName, sourceIsDirectory, NameGenerator::existsChecker(folder));
        return {Resolution::Kind::use, folder / name};
    }
    case ConflictChoice::replace:
    case ConflictChoice::replaceIfOlder:
    case ConflictChoice::replaceIfDifferent:
    case ConflictChoice::renameExisting:
        if (existingHoldsSource) {
            fail(source, FileOperationError::cannotReplace(existingName, contained));
            if (kind_ == Kind::move)
                leftOnPurpose_.insert(source.native());
            progress_.update([&](OperationProgress& p) { p.completedItems += itemCount; });
            return {};
        }
        if ((*choice == ConflictChoice::replaceIfDifferent && !differ(source, existing)) ||
            (*choice == ConflictChoice::replaceIfOlder && !existingIsOlder(source, existing))) {
            skip(source, itemCount);
            return {};
        }
        return {Resolution::Kind::replace, {}, *choice == ConflictChoice::renameExisting};
    case ConflictChoice::merge:
        if (!canMerge) {
            const bool nested = existingHoldsSource || sourceHoldsExisting;
            fail(source,
                 FileOperationError::cannotMerge(
                     existingName, nested ? contained : translate("Orbisk", "only two folders can be merged.")));
            if (kind_ == Kind::move)
                leftOnPurpose_.insert(source.native());
            return {};
        }
        return {Resolution::Kind::merge, existing};
    }
    return {};
}

// Asks the handler (cancel when there is none) and remembers an answer meant for the rest of the
// run: merge as "merge folders without asking", so later file clashes are still asked.
ConflictChoice TransferEngine::decide(const NameConflict& conflict)
{
    const ConflictDecision decision = conflictHandler ? conflictHandler(conflict) : ConflictDecision{};
    if (decision.applyToRemaining && decision.choice != ConflictChoice::cancel) {
        if (decision.choice == ConflictChoice::merge)
            mergeFolders = true;
        else
            rememberedChoice_ = decision.choice;
    }
    return decision.choice;
}

void TransferEngine::skip(const fs::path& source, std::int64_t itemCount)
{
    report_.skipped.push_back(source);
    if (kind_ == Kind::move)
        leftOnPurpose_.insert(source.native());
    progress_.update([&](OperationProgress& p) { p.completedItems += itemCount; });
}

} // namespace orbisk
