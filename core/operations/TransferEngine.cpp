// The run as a whole: checking the sources, the scan, the free-space check and the item loop.
#include "operations/TransferEngine.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <system_error>

#include "operations/ItemActions.h"
#include "platform/FolderListing.h"
#include "platform/OwnedFd.h"
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

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// The folder and every folder above it, as the kernel goes up through "..", by device and inode.
std::vector<std::pair<dev_t, ino_t>> folderChain(const fs::path& folder)
{
    std::vector<std::pair<dev_t, ino_t>> chain;
    OwnedFd current(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    while (current.isOpen() && ::fstat(current.get(), &status) == 0) {
        const std::pair<dev_t, ino_t> identity{status.st_dev, status.st_ino};
        if (std::ranges::find(chain, identity) != chain.end())
            break; // "/" is its own parent
        chain.push_back(identity);
        current = OwnedFd(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return chain;
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
    struct rlimit files {};
    const rlim_t limit = ::getrlimit(RLIMIT_NOFILE, &files) == 0 ? files.rlim_cur : 1024;
    keptLevels_ = std::clamp<std::size_t>(limit / 12, 1, std::max<std::size_t>(foldersKeptOpen, 1));
    destination_ = {destination.st_dev, destination.st_ino};
    destinationChain_ = folderChain(destinationDirectory_);
    if (auto table = MountTable::read())
        mountTable_ = std::move(*table);

    // Target names are looked up under the caller's spelling of each source as well as ours.
    std::map<fs::path, std::string> names;
    for (const auto& [source, name] : targetNames)
        names[cleanPath(source)] = name;

    std::vector<Plan> plans;
    // One item named twice ("c" and "./c", a glob and a name) is one item: copied once, and a move
    // must not take it from where its first copy already took it.
    std::set<fs::path> named;
    for (const auto& source : sources_) {
        if (cancellation_.isCancelled()) {
            report_.cancelled = true;
            return finish();
        }
        if (!named.insert(source).second)
            continue;
        const auto given = names.find(source);
        const std::string targetName = given != names.end() ? given->second : source.filename().native();
        if (!checkSource(source, destination, targetName))
            continue;
        auto plan = makePlan(source, destination);
        if (!plan) {
            report_.cancelled = true;
            return finish();
        }
        if (plan->holdsDestination) {
            fail(source, FileOperationError::destinationInsideSource(source, destinationDirectory_));
            continue;
        }
        // A move by rename takes a mounted volume along; one that copies would copy it and then
        // empty it, and a mount point itself cannot be renamed at all.
        if (kind_ == Kind::move && plan->mountPoint && (*plan->mountPoint == source || !plan->useRename)) {
            fail(source,
                 FileOperationError::mountBoundary(source, *plan->mountPoint, FileOperationError::MountAction::move));
            continue;
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
    // By device and inode, so that neither links, nor bind mounts, nor letter case can hide it.
    const Identity identity{status.st_dev, status.st_ino};
    if (S_ISDIR(status.st_mode) && std::ranges::find(destinationChain_, identity) != destinationChain_.end()) {
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
        if (S_ISREG(status.st_mode)) {
            plan.byteCount = status.st_size;
            plan.writeBytes = countFile(AT_FDCWD, source.c_str(), status);
        }
        return plan;
    }
    findMountPoints(source, plan);
    const int folder = ::open(source.c_str(), folderFlags);
    if (folder >= 0 && !countTree(folder, source, status.st_dev, plan))
        return std::nullopt;
    return plan;
}

// The mount points at or inside a source folder, from the mount table, which lists real paths:
// the source's own folder is resolved, the source itself is not (it is a real folder here).
void TransferEngine::findMountPoints(const fs::path& source, Plan& plan)
{
    if (!mountTable_)
        return;
    std::error_code error;
    const fs::path parent = fs::canonical(Paths::parentFolder(source), error);
    if (error)
        return;
    const fs::path real = parent / source.filename();
    for (const auto& entry : mountTable_->entries()) {
        if (!Paths::isSameOrInside(entry.mountPoint, real))
            continue;
        const fs::path relative = entry.mountPoint.lexically_relative(real);
        const fs::path spelled = relative == "." ? source : source / relative;
        if (spelled != source)
            mountPoints_.insert(spelled.native());
        if (!plan.mountPoint || spelled == source)
            plan.mountPoint = spelled;
    }
}

// Counts the entries below an open folder (taking over its descriptor) and the bytes of their
// regular files; false when cancelled. Folders on another device are mount points too, and the
// walk stays out of every mount point, as the copy does. Unreadable folders count as what could be
// read: the copy reports them. Deep below the kept levels a folder is listed and its entries'
// status read at once, and its descriptor closed before the walk goes further down.
bool TransferEngine::countTree(int folderFd, const fs::path& path, dev_t device, Plan& plan)
{
    OwnedFd folder(folderFd);
    const bool keep = openLevels_ < keptLevels_;
    const int listFd = ::dup(folder.get());
    if (listFd < 0)
        return true;
    auto listing = FolderListing::open(listFd, keep);
    if (!listing)
        return true;
    const OpenLevel level(openLevels_, keep);
    std::vector<std::pair<std::string, struct stat>> later;
    while (auto entry = listing->next()) {
        ++plan.itemCount;
        if ((plan.itemCount & 0xFFF) == 0 && cancellation_.isCancelled())
            return false;
        const bool knownOther = entry->type != DT_UNKNOWN && entry->type != DT_DIR && entry->type != DT_REG;
        if (knownOther)
            continue;
        struct stat status {};
        if (::fstatat(folder.get(), entry->name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISREG(status.st_mode)) {
            plan.byteCount += status.st_size;
            plan.writeBytes += countFile(folder.get(), entry->name.c_str(), status);
            continue;
        }
        if (!S_ISDIR(status.st_mode))
            continue;
        fs::path child = path / entry->name;
        if (Identity{status.st_dev, status.st_ino} == destination_)
            plan.holdsDestination = true;
        if (status.st_dev != device || mountPoints_.contains(child.native())) {
            mountPoints_.insert(child.native());
            if (!plan.mountPoint)
                plan.mountPoint = std::move(child);
            continue;
        }
        if (!keep) {
            later.emplace_back(std::move(entry->name), status);
            continue;
        }
        const int childFd = ::openat(folder.get(), entry->name.c_str(), folderFlags);
        if (childFd >= 0 && !countTree(childFd, child, device, plan))
            return false;
    }
    folder.reset();
    for (const auto& [name, status] : later) {
        // Reopened by name; counted only when it is still the folder whose status was read.
        const int child = ::open((path / name).c_str(), folderFlags);
        if (child < 0)
            continue;
        struct stat now {};
        if (::fstat(child, &now) != 0 || now.st_dev != status.st_dev || now.st_ino != status.st_ino) {
            ::close(child);
            continue;
        }
        if (!countTree(child, path / name, device, plan))
            return false;
    }
    return true;
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
