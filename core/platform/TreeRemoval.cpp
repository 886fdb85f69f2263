#include "platform/TreeRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/FolderListing.h"
#include "platform/OwnedFd.h"

namespace orbisk::TreeRemoval {

namespace fs = std::filesystem;

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool sameObject(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Opens the folder `name` of `at`, first making it readable and searchable when its mode
// refuses that. fchmodat without following links pins the entry before it changes the mode, so
// a link put in its place is refused rather than followed.
int openFolder(int at, const char* name)
{
    int fd = ::openat(at, name, folderFlags);
    if (fd < 0 && errno == EACCES && ::fchmodat(at, name, 0700, AT_SYMLINK_NOFOLLOW) == 0)
        fd = ::openat(at, name, folderFlags);
    return fd;
}

class Remover {
public:
    explicit Remover(std::size_t keptOpen) : keptOpen_(keptOpen) {}

    // Empties the open folder at path (the very object `identity` describes). Takes the
    // descriptor over.
    int empty(OwnedFd folder, const fs::path& path, const struct stat& identity)
    {
        const bool keep = open_ < keptOpen_;
        if (keep)
            ++open_;
        const int result = emptyListed(std::move(folder), path, identity, keep);
        if (keep)
            --open_;
        return result;
    }

private:
    int emptyListed(OwnedFd folder, const fs::path& path, const struct stat& identity, bool keep)
    {
        // All names first: entries removed while a folder is being read may make readdir skip others.
        const int listFd = ::dup(folder.get());
        if (listFd < 0)
            return errno;
        auto listing = FolderListing::open(listFd, false);
        if (!listing)
            return listing.error();
        if (listing->error() != 0)
            return listing->error();
        bool madeWritable = false;
        while (auto entry = listing->next()) {
            if (!folder.isOpen()) {
                // Deep in the tree this level gave its descriptor up while the one below was removed.
                folder = OwnedFd(::open(path.c_str(), folderFlags));
                struct stat now {};
                if (!folder.isOpen())
                    return errno;
                if (::fstat(folder.get(), &now) != 0)
                    return errno;
                if (!sameObject(now, identity))
                    return ESTALE;
            }
            const char* name = entry->name.c_str();
            if (::unlinkat(folder.get(), name, 0) == 0 || errno == ENOENT)
                continue;
            int code = errno;
            if ((code == EACCES || code == EPERM) && !madeWritable) {
                // A read-only folder, copied with its mode: the descriptor is this very folder.
                madeWritable = true;
                if (::fchmod(folder.get(), 0700) == 0) {
                    if (::unlinkat(folder.get(), name, 0) == 0 || errno == ENOENT)
                        continue;
                    code = errno;
                }
            }
            // A folder: Linux says EISDIR, POSIX allows EPERM, which also means a file we may not remove.
            struct stat entryStatus {};
            const bool folderEntry =
                code == EISDIR ||
                (code == EPERM && ::fstatat(folder.get(), name, &entryStatus, AT_SYMLINK_NOFOLLOW) == 0 &&
                 S_ISDIR(entryStatus.st_mode));
            if (!folderEntry)
                return code;
            OwnedFd child(openFolder(folder.get(), name));
            struct stat childIdentity {};
            if (!child.isOpen() || ::fstat(child.get(), &childIdentity) != 0)
                return errno;
            if (!keep)
                folder.reset();
            if (const int failed = empty(std::move(child), path / entry->name, childIdentity); failed != 0)
                return failed;
            if (!folder.isOpen()) {
                folder = OwnedFd(::open(path.c_str(), folderFlags));
                struct stat now {};
                if (!folder.isOpen() || ::fstat(folder.get(), &now) != 0)
                    return errno;
                if (!sameObject(now, identity))
                    return ESTALE;
            }
            if (::unlinkat(folder.get(), name, AT_REMOVEDIR) != 0 && errno != ENOENT)
                return errno;
        }
        return 0;
    }

    std::size_t keptOpen_;
    std::size_t open_ = 0;
};

} // namespace

std::expected<void, int> removeTree(const fs::path& path, std::size_t foldersKeptOpen)
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return errno == ENOENT ? std::expected<void, int>{} : std::unexpected(errno);
    if (!S_ISDIR(status.st_mode)) {
        if (::unlink(path.c_str()) != 0 && errno != ENOENT)
            return std::unexpected(errno);
        return {};
    }
    OwnedFd folder(openFolder(AT_FDCWD, path.c_str()));
    struct stat identity {};
    if (!folder.isOpen() || ::fstat(folder.get(), &identity) != 0)
        return std::unexpected(errno);
    if (!sameObject(identity, status))
        return std::unexpected(ESTALE);
    Remover remover(foldersKeptOpen);
    if (const int failed = remover.empty(std::move(folder), path, identity); failed != 0)
        return std::unexpected(failed);
    if (::rmdir(path.c_str()) != 0 && errno != ENOENT)
        return std::unexpected(errno);
    return {};
}

} // namespace orbisk::TreeRemoval
