// The run as a whole: checking the sources, the scan, the free-space check and the item loop.
#include "operations/TransferEngine.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "operations/ItemActions.h"
#include "support/Paths.h"

namespace orbisk {

namespace fs = std::filesystem;

namespace {

// An item as the kernel reads it, without a trailing "/", so that names and containment tests see
// what the user meant by "folder/" or "link/../item".
fs::path cleanPath(const fs::path& path)
{
    return Paths::itemPath(path);
}

// The path with links in its folders resolved, for containment tests that links cannot fool.
fs::path resolvedPath(const fs::path& path)
{
    std::error_code error;
    fs::path resolved = fs::weakly_canonical(path, error);
    return error ? path : resolved;
}

} // namespace

TransferEngine::TransferEngine(Kind kind, std::vector<fs::path> sources, fs::path destinationDirectory,
                               CancellationToken& cancellation, OperationProgressTracker& progress)
    : kind_(kind), sources_(std::move(sources)), destinationDirectory_(Paths::folderPath(destinationDirectory)),
      cancellation_(cancellation), progress_(progress)
{
    for (auto& source : sources_)
        source = cleanPath(source);
}

OperationReport TransferEngine::run()
{
    const auto finish = [this] {
        progress_.update([](OperationProgress& p) { p.phase = OperationProgress::Phase::finished; });
        return std::move(report_);
    };

    struct stat destination {};
    if (::stat(destinationDirectory_.c_str(), &destination) != 0 || !S_ISDIR(destination.st_mode)) {
        fail(destinationDirectory_, FileOperationError::destinationNotFolder(destinationDirectory_));
        return finish();
    }

    // Target names are looked up under the caller's spelling of each source as well as ours.
    std::map<fs::path, std::string> names;
    for (const auto& [source, name] : targetNames)
        names[cleanPath(source)] = name;

    std::vector<Plan> plans;
    for (const auto& source : sources_) {
        if (cancellation_.isCancelled()) {
            report_.cancelled = true;
            return finish();
        }
        const auto named = names.find(source);
        const std::string targetName = named != names.end() ? named->second : source.filename().native();
        if (!checkSource(source, destination, targetName))
            continue;
        auto plan = makePlan(source, destination);
        if (!plan) {
            report_.cancelled = true;
            return finish();
        }
        if (kind_ == Kind::move && !plan->useRename && !canEmptyAndRemove(source))
            continue;
        plan->targetName = targetName;
        plans.push_back(std::move(*plan));
    }

    std::int64_t totalItems = 0;
    std::int64_t totalBytes = 0;
    for (const auto& plan : plans) {
        totalItems += plan.itemCount;
        totalBytes += plan.byteCount;
    }
    progress_.update([&](OperationProgress& p) {
        p.totalItems = totalItems;
        p.totalBytes = totalBytes;
        p.phase = OperationProgress::Phase::working;
    });

    if (!hasRoomFor(plans))
        return finish();

    std::int64_t itemsBefore = 0;
    std::int64_t bytesBefore = 0;
    for (const auto& plan : plans) {
        if (cancellation_.isCancelled()) {
            report_.cancelled = true;
            break;
        }
        if (stopRequested_)
            break;
        progress_.update([&](OperationProgress& p) { p.setCurrentPath(plan.source.native()); });
        const Mode mode{kind_ == Kind::move, plan.useRename};
        performItem(plan.source, destinationDirectory_, plan.targetName, mode, plan.itemCount);
        itemsBefore += plan.itemCount;
        bytesBefore += plan.byteCount;
        finishTopLevel(itemsBefore, bytesBefore);
    }
    queue_.reset();
    if (cancellation_.isCancelled())
        report_.cancelled = true;

    // Also after a cancellation: an item whose copy completed is reported and recorded as moved,
    // so its source goes (with the usual checks) rather than staying in both places.
    removeCopiedSources();
    return finish();
}

bool TransferEngine::checkSource(const fs::path& source, const struct stat& destination, const std::string& targetName)
{
    if (auto item = ItemActions::validateItem(source); !item) {
        fail(source, item.error());
        return false;
    }
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0) {
        fail(source, FileOperationError::itemMissing(source));
        return false;
    }
    if (S_ISDIR(status.st_mode) && Paths::isSameOrInside(resolvedPath(destinationDirectory_), resolvedPath(source))) {
        fail(source, FileOperationError::destinationInsideSource(source, destinationDirectory_));
        return false;
    }
    if (kind_ == Kind::move && source.filename().native() == targetName) {
        struct stat parent {};
        if (::stat(Paths::parentFolder(source).c_str(), &parent) == 0 && parent.st_dev == destination.st_dev &&
            parent.st_ino == destination.st_ino) {
            fail(source, FileOperationError::alreadyInDestination(targetName));
            return false;
        }
    }
    return true;
}

std::optional<TransferEngine::Plan> TransferEngine::makePlan(const fs::path& source, const struct stat& destination)
{
    Plan plan;
    plan.source = source;
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0)
        return plan; // gone since it was checked: performing it reports that
    plan.isRealDirectory = S_ISDIR(status.st_mode);
    plan.crossesVolume = status.st_dev != destination.st_dev;
    plan.useRename = kind_ == Kind::move && !plan.crossesVolume && !forceCopyThenDelete;
    if (!plan.isRealDirectory) {
        plan.byteCount = S_ISREG(status.st_mode) ? status.st_size : 0;
        return plan;
    }
    const int folder = ::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder >= 0 && !countTree(folder, plan))
        return std::nullopt;
    return plan;
}

// Counts the entries below an open folder (taking over its descriptor) and the bytes of their
// regular files; unreadable folders count as what could be read. False when cancelled.
bool TransferEngine::countTree(int folderFd, Plan& plan)
{
    DIR* folder = ::fdopendir(folderFd);
    if (!folder) {
        ::close(folderFd);
        return true;
    }
    bool goOn = true;
    while (const dirent* entry = ::readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        ++plan.itemCount;
        if ((plan.itemCount & 0xFFF) == 0 && cancellation_.isCancelled()) {
            goOn = false;
            break;
        }
        const bool knownOther = entry->d_type != DT_UNKNOWN && entry->d_type != DT_DIR && entry->d_type != DT_REG;
        if (knownOther)
            continue;
        struct stat status {};
        if (::fstatat(::dirfd(folder), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISREG(status.st_mode)) {
            plan.byteCount += status.st_size;
        } else if (S_ISDIR(status.st_mode)) {
            const int child = ::openat(::dirfd(folder), entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child >= 0 && !countTree(child, plan)) {
                goOn = false;
                break;
            }
        }
    }
    ::closedir(folder);
    return goOn;
}

bool TransferEngine::hasRoomFor(const std::vector<Plan>& plans)
{
    std::int64_t needed = 0;
    for (const auto& plan : plans)
        if (!plan.useRename)
            needed += plan.byteCount;
    if (needed == 0)
        return true;
    const auto capacity = Paths::volumeCapacity(destinationDirectory_);
    if (!capacity || needed <= capacity->available)
        return true;
    report_.abortReason = FileOperationError::insufficientSpace(needed, capacity->available).errorDescription();
    return false;
}

void TransferEngine::finishTopLevel(std::int64_t itemsDone, std::int64_t bytesDone)
{
    // Entries inside the item raised the counts as they went; the item as a whole counts exactly
    // its planned entries and bytes, whether it was copied, renamed, skipped or failed.
    progress_.update([&](OperationProgress& p) {
        p.completedItems = itemsDone;
        p.completedBytes = bytesDone;
    });
}

void TransferEngine::fail(const fs::path& item, FileOperationError error)
{
    report_.failures.push_back(ItemFailure{item, std::move(error)});
}

} // namespace orbisk
