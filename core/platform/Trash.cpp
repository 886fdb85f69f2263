#include "platform/Trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>

#include "platform/ExclusiveRename.h"
#include "platform/TrashInfo.h"
#include "support/Paths.h"

namespace orbisk {
namespace fs = std::filesystem;

namespace {

using Failure = std::unexpected<int>;

// Owns one open folder descriptor.
class Folder {
public:
    Folder() = default;
    explicit Folder(int fd) : fd_(fd) {}
    Folder(Folder&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Folder& operator=(Folder&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Folder()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    [[nodiscard]] int fd() const { return fd_; }

private:
    int fd_ = -1;
};

std::expected<Folder, int> openFolder(int at, const char* name, bool followLinks)
{
    const int fd = ::openat(at, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLinks ? 0 : O_NOFOLLOW));
    if (fd < 0)
        return Failure(errno);
    return Folder(fd);
}

// Makes the folder when missing (0700, as the standard asks for trash folders) and opens it. With
// ownerCheck, a folder that another user owns is refused, so that nobody can lay out a trash for us.
std::expected<Folder, int> makeAndOpen(int at, const char* name, std::optional<uid_t> owner)
{
    if (::mkdirat(at, name, 0700) != 0 && errno != EEXIST)
        return Failure(errno);
    auto folder = openFolder(at, name, false);
    if (!folder || !owner)
        return folder;
    struct stat status {};
    if (::fstat(folder->fd(), &status) != 0)
        return Failure(errno);
    if (status.st_uid != *owner)
        return Failure(EPERM);
    return folder;
}

std::expected<fs::path, int> realPath(const fs::path& path)
{
    char buffer[PATH_MAX];
    if (!::realpath(path.c_str(), buffer))
        return Failure(errno);
    return fs::path(buffer);
}

// The real location of an entry without following the entry itself, which may be a link.
std::expected<fs::path, int> realLocation(const fs::path& absolute)
{
    auto parent = realPath(absolute.parent_path());
    if (!parent)
        return parent;
    return *parent / absolute.filename();
}

// The real path of the nearest existing folder on the way to path (the home trash before it exists).
fs::path nearestRealFolder(fs::path path)
{
    while (true) {
        if (auto real = realPath(path))
            return *real;
        if (!path.has_relative_path())
            return path;
        path = path.parent_path();
    }
}

struct TrashFolder {
    fs::path path;
    Folder folder;
};

std::expected<TrashFolder, int> openHomeTrash(const fs::path& homeTrash)
{
    // Missing parents too ($XDG_DATA_HOME itself may not exist yet); each new level is private.
    fs::path made;
    for (const auto& component : homeTrash) {
        made /= component;
        if (::mkdir(made.c_str(), 0700) != 0 && errno != EEXIST)
            return Failure(errno);
    }
    auto folder = openFolder(AT_FDCWD, homeTrash.c_str(), true);
    if (!folder)
        return Failure(folder.error());
    return TrashFolder{homeTrash, std::move(*folder)};
}

// The volume trash of the standard: $topdir/.Trash/$uid when $topdir/.Trash is a real folder (not a
// link) with the sticky bit set, an administrator's shared trash; otherwise $topdir/.Trash-$uid.
std::expected<TrashFolder, int> openVolumeTrash(const fs::path& topdir, uid_t uid)
{
    auto top = openFolder(AT_FDCWD, topdir.c_str(), true);
    if (!top)
        return Failure(top.error());
    const std::string user = std::to_string(uid);
    struct stat shared {};
    if (::fstatat(top->fd(), ".Trash", &shared, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(shared.st_mode) &&
        (shared.st_mode & S_ISVTX) != 0) {
        if (auto sharedFolder = openFolder(top->fd(), ".Trash", false)) {
            if (auto own = makeAndOpen(sharedFolder->fd(), user.c_str(), uid))
                return TrashFolder{topdir / ".Trash" / user, std::move(*own)};
        }
    }
    const std::string name = ".Trash-" + user;
    auto own = makeAndOpen(top->fd(), name.c_str(), uid);
    if (!own)
        return Failure(own.error());
    return TrashFolder{topdir / name, std::move(*own)};
}

// The item as the kernel reads it: "folder/" names the folder itself, and "link/../item" the item
// beside the link's target.
fs::path absoluteItem(const fs::path& item)
{
    return Paths::itemPath(item);
}

} // namespace

Trash::Trash(fs::path homeTrash, uid_t uid, std::optional<MountTable> mounts)
    : homeTrash_(absoluteItem(homeTrash)), uid_(uid), mounts_(std::move(mounts))
{
}

Trash Trash::forCurrentUser()
{
    return Trash(homeTrashFolder(), ::getuid());
}

fs::path Trash::homeTrashFolder()
{
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && data[0] == '/')
        return fs::path(data) / "Trash";
    return Paths::home() / ".local/share/Trash";
}

std::expected<fs::path, int> Trash::moveToTrash(const fs::path& item) const
{
    if (item.empty())
        return Failure(ENOENT);
    const fs::path absolute = absoluteItem(item);
    const std::string name = absolute.filename().native();
    if (name.empty() || name == "." || name == "..")
        return Failure(EINVAL);
    struct stat status {};
    if (::lstat(absolute.c_str(), &status) != 0)
        return Failure(errno);
    const auto real = realLocation(absolute);
    if (!real)
        return Failure(real.error());

    std::optional<MountTable> live;
    if (!mounts_) {
        auto table = MountTable::read();
        if (!table)
            return Failure(table.error());
        live = std::move(*table);
    }
    const MountTable& mounts = mounts_ ? *mounts_ : *live;
    const MountEntry* itemMount = mounts.mountOf(*real);
    if (!itemMount)
        return Failure(ENOENT);
    // Checked before a trash folder is made, which on a mount point would land on the mounted volume.
    if (mounts.mountAtOrBelow(*real))
        return Failure(EBUSY);

    // The home trash takes items of its own mount; a bind mount of the same file system does not
    // count, since rename(2) cannot cross it.
    const bool home = mounts.mountOf(nearestRealFolder(homeTrash_)) == itemMount;
    auto trash = home ? openHomeTrash(homeTrash_) : openVolumeTrash(itemMount->mountPoint, uid_);
    if (!trash)
        return Failure(trash.error());
    auto files = makeAndOpen(trash->folder.fd(), "files", std::nullopt);
    auto info = makeAndOpen(trash->folder.fd(), "info", std::nullopt);
    if (!files)
        return Failure(files.error());
    if (!info)
        return Failure(info.error());

    // Path: absolute in the home trash, relative to the top folder in a volume trash, so that the
    // volume can be mounted elsewhere and its trash still read.
    const std::string recorded = home || itemMount->mountPoint == "/"
                                     ? real->native()
                                     : real->lexically_relative(itemMount->mountPoint).native();
    const std::string text = TrashInfo::contents(recorded, std::time(nullptr));

    // The info file is created exclusively first, which reserves the name; then the item is renamed
    // in under that name, exclusively as well. A name taken in either folder moves on to the next.
    for (int attempt = 1; attempt < 100000; ++attempt) {
        const std::string candidate = TrashInfo::candidateName(name, attempt);
        const std::string infoName = candidate + std::string(TrashInfo::infoSuffix);
        const int fd =
            ::openat(info->fd(), infoName.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return Failure(errno);
        }
        const auto written = ::write(fd, text.data(), text.size());
        const int writeError = errno;
        const bool closed = ::close(fd) == 0;
        if (written != static_cast<ssize_t>(text.size()) || !closed) {
            ::unlinkat(info->fd(), infoName.c_str(), 0);
            return Failure(written < 0 ? writeError : ENOSPC);
        }
        const auto moved = ExclusiveRename::renameAt(AT_FDCWD, absolute, files->fd(), candidate);
        if (moved)
            return trash->path / "files" / candidate;
        ::unlinkat(info->fd(), infoName.c_str(), 0);
        if (moved.error() != EEXIST)
            return Failure(moved.error());
    }
    return Failure(EEXIST);
}

std::expected<void, int> Trash::putBack(const fs::path& inTrash, const fs::path& original)
{
    if (auto moved = ExclusiveRename::rename(inTrash, original); !moved)
        return moved;
    // The item is back; an info file that cannot be removed only leaves a stale line in trash lists.
    if (inTrash.parent_path().filename() == "files")
        ::unlink(infoFileFor(inTrash).c_str());
    return {};
}

fs::path Trash::infoFileFor(const fs::path& inTrash)
{
    return inTrash.parent_path().parent_path() / "info" /
           (inTrash.filename().native() + std::string(TrashInfo::infoSuffix));
}

} // namespace orbisk
