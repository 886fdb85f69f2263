// The second half of a move across volumes: removing only sources that provably did not change.
#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
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

// Goes through the records backwards, so that every entry comes before the folder holding it. A
// file is unlinked only when it is still the very file that was copied (device, inode, size and
// time to the nanosecond); a folder is removed only when empty. What stays is named in one
// message, apart from what was skipped or failed on purpose, which the report already lists.
void TransferEngine::removeCopiedSources()
{
    if (copiedForMove_.empty())
        return;
    if (beforeSourceRemoval)
        beforeSourceRemoval();

    std::set<std::string> staying = leftOnPurpose_;
    std::vector<std::string> leftNames;
    std::string firstLeft;
    const auto leave = [&](const std::string& path) {
        if (firstLeft.empty())
            firstLeft = path;
        leftNames.push_back(fs::path(path).filename().native());
    };

    for (auto it = copiedForMove_.rbegin(); it != copiedForMove_.rend(); ++it) {
        const std::string path = copiedPaths_.substr(it->pathOffset, it->pathLength);
        if (it->isDirectory) {
            if (::rmdir(path.c_str()) == 0 || errno == ENOENT)
                continue;
            if (errno == ENOTEMPTY || errno == EEXIST) {
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
        struct stat now {};
        if (::lstat(path.c_str(), &now) != 0 && errno == ENOENT)
            continue; // already gone: nothing left to remove
        const bool unchanged = now.st_dev == it->device && now.st_ino == it->inode && now.st_size == it->size &&
                               now.st_mtim.tv_sec == it->modified.tv_sec && now.st_mtim.tv_nsec == it->modified.tv_nsec;
        if (unchanged && ::unlink(path.c_str()) == 0)
            continue;
        leave(path);
        staying.insert(path);
    }
    copiedForMove_.clear();
    copiedPaths_.clear();

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

} // namespace orbisk
