// The second half of a move across volumes: removing only sources that provably did not change.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <set>

#include "operations/TransferEngine.h"
#include "support/L10n.h"
#include "support/Paths.h"
#include "support/Translate.h"

namespace orbisk {

namespace fs = std::filesystem;

void TransferEngine::record(const fs::path& source, const struct stat& status)
{
    const std::string& path = source.native();
    CopiedRecord entry;
    entry.pathOffset = copiedPaths_.size();
    entry.pathLength = static_cast<std::uint32_t>(path.size());
    entry.isDirectory = S_ISDIR(status.st_mode);
    entry.device = status.st_dev;
    entry.inode = status.st_ino;
    entry.size = status.st_size;
    entry.modified = status.st_mtim;
    copiedPaths_ += path;
    copiedForMove_.push_back(entry);
}

// Drops the records of an item whose copy did not complete: its sources must stay.
void TransferEngine::forgetRecordsFrom(std::size_t mark)
{
    if (mark >= copiedForMove_.size())
        return;
    copiedPaths_.resize(copiedForMove_[mark].pathOffset);
    copiedForMove_.resize(mark);
}

// Drops the records of a folder whose copy was not made, and of everything recorded inside it,
// from mark on. Records of other folders' files may have been taken off the copy queue in between
// and stay.
void TransferEngine::forgetRecordsUnder(std::size_t mark, const fs::path& folder)
{
    if (mark >= copiedForMove_.size())
        return;
    const std::string& top = folder.native();
    const auto inside = [&](const CopiedRecord& entry) {
        const std::string_view path(copiedPaths_.data() + entry.pathOffset, entry.pathLength);
        return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == '/');
    };
    const auto first = copiedForMove_.begin() + static_cast<std::ptrdiff_t>(mark);
    copiedForMove_.erase(std::remove_if(first, copiedForMove_.end(), inside), copiedForMove_.end());
}

namespace {

struct Blocker {
    fs::path path;
    int code = 0;
};

// Whether this user may take entries out of the folder open at fd: write and search permission,
// and in a sticky folder (such as /tmp) ownership of each entry or of the folder. The first
// folder or entry that stands in the way is returned. Folders that cannot even be read are left
// to the copy, which reports them and leaves them in place with their folders.
std::optional<Blocker> firstBlocker(int fd, const fs::path& path, const struct stat& status)
{
    if (::faccessat(fd, ".", W_OK | X_OK, AT_EACCESS) != 0)
        return Blocker{path, errno};
    const uid_t me = ::geteuid();
    const bool sticky = (status.st_mode & S_ISVTX) != 0 && me != 0 && me != status.st_uid;
    const int listFd = ::dup(fd);
    DIR* folder = listFd >= 0 ? ::fdopendir(listFd) : nullptr;
    if (!folder) {
        if (listFd >= 0)
            ::close(listFd);
        return std::nullopt;
    }
    std::vector<std::string> folders;
    std::optional<Blocker> blocker;
    while (const dirent* entry = ::readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        struct stat child {};
        const bool needStatus = sticky || entry->d_type == DT_UNKNOWN;
        if (needStatus && ::fstatat(fd, entry->d_name, &child, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (sticky && child.st_uid != me) {
            blocker = Blocker{path / entry->d_name, EPERM};
            break;
        }
        if (entry->d_type == DT_DIR || (entry->d_type == DT_UNKNOWN && S_ISDIR(child.st_mode)))
            folders.emplace_back(entry->d_name);
    }
    ::closedir(folder);
    for (const auto& name : folders) {
        if (blocker)
            break;
        const int child = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (child < 0)
            continue;
        struct stat childStatus {};
        if (::fstat(child, &childStatus) == 0)
            blocker = firstBlocker(child, path / name, childStatus);
        ::close(child);
    }
    return blocker;
}

bool isSameOrBelow(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

// A move across volumes removes each source after copying it; this checks first that this user
// may, so that a read-only folder is refused whole instead of being half removed.
bool TransferEngine::canEmptyAndRemove(const fs::path& source)
{
    std::optional<Blocker> blocker;
    struct stat status {};
    struct stat parent {};
    const fs::path parentPath = Paths::parentFolder(source);
    if (::lstat(source.c_str(), &status) != 0 || ::stat(parentPath.c_str(), &parent) != 0)
        return true; // performing it reports what is missing
    if (::faccessat(AT_FDCWD, parentPath.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        blocker = Blocker{source, errno};
    } else if (const uid_t me = ::geteuid();
               (parent.st_mode & S_ISVTX) && me != 0 && me != parent.st_uid && me != status.st_uid) {
        blocker = Blocker{source, EPERM};
    } else if (S_ISDIR(status.st_mode)) {
        const int folder = ::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (folder >= 0) {
            blocker = firstBlocker(folder, source, status);
            ::close(folder);
        }
    }
    if (!blocker)
        return true;
    fail(source, FileOperationError::system(blocker->code, "move", blocker->path));
    return false;
}

// Goes through the records backwards, so that every entry comes before the folder holding it.
// Every removal is checked against its record: a file is unlinked only when it is still the very
// file that was copied (device, inode, size and time to the nanosecond), a folder only when it is
// still the folder that was copied and empty. What stays is named in one message, apart from what
// was skipped or failed on purpose, which the report already lists; what another program moved
// away or deleted meanwhile is reported as such, never taken for removed.
void TransferEngine::removeCopiedSources()
{
    if (copiedForMove_.empty())
        return;
    if (beforeSourceRemoval)
        beforeSourceRemoval();

    std::set<std::string> staying = leftOnPurpose_;
    std::vector<std::string> leftNames;
    std::vector<std::string> vanished;
    std::string firstLeft;
    const auto leave = [&](const std::string& path) {
        if (firstLeft.empty())
            firstLeft = path;
        leftNames.push_back(fs::path(path).filename().native());
    };

    for (auto it = copiedForMove_.rbegin(); it != copiedForMove_.rend(); ++it) {
        const std::string path = copiedPaths_.substr(it->pathOffset, it->pathLength);
        if (leftOnPurpose_.contains(path))
            continue;
        struct stat now {};
        if (::lstat(path.c_str(), &now) != 0) {
            if (errno == ENOENT)
                vanished.push_back(path);
            else
                leave(path);
            continue;
        }
        const bool same = now.st_dev == it->device && now.st_ino == it->inode;
        if (it->isDirectory) {
            if (same && S_ISDIR(now.st_mode) && ::rmdir(path.c_str()) == 0) {
                if (mergedSources_.contains(path))
                    report_.undoChanges.push_back(UndoChange::removedFolder(path, now.st_mode & 07777));
                continue;
            }
            if (same && (errno == ENOTEMPTY || errno == EEXIST)) {
                // Whatever is inside and not already accounted for was added during the move.
                if (DIR* folder = ::opendir(path.c_str())) {
                    while (const dirent* entry = ::readdir(folder)) {
                        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                            continue;
                        std::string child = path + "/" + entry->d_name;
                        if (!staying.contains(child))
                            leave(child);
                    }
                    ::closedir(folder);
                }
            } else {
                leave(path);
            }
            staying.insert(path);
            continue;
        }
        const bool unchanged = same && now.st_size == it->size && now.st_mtim.tv_sec == it->modified.tv_sec &&
                               now.st_mtim.tv_nsec == it->modified.tv_nsec;
        if (unchanged && ::unlink(path.c_str()) == 0)
            continue;
        leave(path);
        staying.insert(path);
    }
    copiedForMove_.clear();
    copiedPaths_.clear();
    reportVanished(vanished);

    if (leftNames.empty())
        return;
    fs::path topLevel = firstLeft;
    for (const auto& source : sources_)
        if (Paths::isSameOrInside(firstLeft, source)) {
            topLevel = source;
            break;
        }
    std::string names;
    for (const auto& name : leftNames)
        names += (names.empty() ? "" : ", ") + name;
    fail(topLevel, FileOperationError::sourceNotRemoved(
                       topLevel, L(translate("Orbisk", "%lld items were added, changed or could not be removed "
                                                       "during the move and were left in place (%@)."),
                                   static_cast<long long>(leftNames.size()), names)));
}

// Sources that were gone when their turn to be removed came. A whole item that went is not moved
// but copied: it leaves the list of moved items, and undo takes back the copy instead of moving it
// over whatever is in the old place by then. For entries inside an item, the item's report names
// them. Only the outermost vanished entries count: what was inside went with them.
void TransferEngine::reportVanished(const std::vector<std::string>& vanished)
{
    const std::set<std::string> gone(vanished.begin(), vanished.end());
    std::map<std::string, std::vector<std::string>> inside;
    for (const auto& path : vanished) {
        if (gone.contains(Paths::parentFolder(path).native()))
            continue;
        const auto top =
            std::ranges::find_if(sources_, [&](const fs::path& s) { return isSameOrBelow(path, s.native()); });
        if (top == sources_.end() || top->native() != path) {
            inside[top == sources_.end() ? path : top->native()].push_back(fs::path(path).filename().native());
            continue;
        }
        // Merged entries count as inside the item: their copies are copies too.
        const auto within = [&](const fs::path& p) { return isSameOrBelow(p.native(), top->native()); };
        std::erase_if(report_.completed, [&](const TransferredItem& item) { return within(item.source); });
        for (auto& change : report_.undoChanges)
            if (const auto* moved = std::get_if<UndoChange::Moved>(&change.change); moved && within(moved->from))
                change = UndoChange::created(moved->to, moved->stamp);
        fail(*top, FileOperationError::sourceNotRemoved(
                       *top, translate("Orbisk", "it is no longer where it was (another program moved or deleted it "
                                                 "during the move).")));
    }
    for (const auto& [top, names] : inside) {
        std::string list;
        for (const auto& name : names)
            list += (list.empty() ? "" : ", ") + name;
        fail(top, FileOperationError::sourceNotRemoved(
                      top, L(translate("Orbisk", "%lld items were moved or deleted by another program during the "
                                                 "move (%@)."),
                             static_cast<long long>(names.size()), list)));
    }
}

} // namespace orbisk
