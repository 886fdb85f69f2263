#include "platform/FileMetadata.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk::FileMetadata {
namespace {

// Reads with the usual two-call protocol of the xattr calls: ask the size, then read, and start
// again when the value grew in between (ERANGE). Returns -1 with errno set on failure.
template <typename Call> ssize_t readSized(std::vector<char>& buffer, Call call)
{
    for (;;) {
        const ssize_t size = call(nullptr, 0);
        if (size <= 0)
            return size;
        buffer.resize(static_cast<std::size_t>(size));
        const ssize_t got = call(buffer.data(), buffer.size());
        if (got >= 0 || errno != ERANGE)
            return got;
    }
}

// Namespaces other than user.* and the POSIX ACLs (trusted.*, security.*) need privileges or
// belong to a security module; failing to carry them over is not a reason to fail the copy,
// just as cp --preserve=all does not fail on them.
bool isPrivilegedNamespace(std::string_view name)
{
    return !name.starts_with("user.") && !name.starts_with("system.posix_acl_");
}

// Says whether anything was set: an ACL among the attributes changes the permission bits.
std::expected<bool, CopyError> copyExtendedAttributes(int source, int destination, const std::filesystem::path& path)
{
    std::vector<char> names;
    const ssize_t listed =
        readSized(names, [source](char* data, std::size_t size) { return ::flistxattr(source, data, size); });
    if (listed < 0) {
        if (errno == ENOTSUP)
            return false;
        return std::unexpected(CopyError::system(CopyStep::readSource, errno, path));
    }
    bool set = false;
    std::vector<char> value;
    for (std::size_t at = 0; at < static_cast<std::size_t>(listed);) {
        const std::string name(names.data() + at);
        at += name.size() + 1;
        const ssize_t got = readSized(value, [source, &name](char* data, std::size_t size) {
            return ::fgetxattr(source, name.c_str(), data, size);
        });
        if (got < 0) {
            if (errno == ENODATA) // removed since it was listed
                continue;
            return std::unexpected(CopyError::system(CopyStep::readSource, errno, path));
        }
        if (::fsetxattr(destination, name.c_str(), value.data(), static_cast<std::size_t>(got), 0) == 0) {
            set = true;
            continue;
        }
        if (errno == ENOTSUP)
            continue; // the destination file system has no such attributes
        if ((errno == EPERM || errno == EACCES) && isPrivilegedNamespace(name))
            continue;
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    }
    return set;
}

// Tries the owner and group, then the group alone (a user may give a file any group they belong
// to), and says which of the two the copy now has like the source, since setuid and setgid
// depend on it. A copy that already has the source's owner and group (`now` is its status; the
// common case of copying one's own files) is left alone: a chown costs a metadata write even
// when it changes nothing.
struct KeptOwner {
    bool user = false;
    bool group = false;
    bool changed = false; ///< a chown was made, which may have cleared setuid and setgid
};

std::expected<KeptOwner, CopyError> copyOwner(const struct stat& status, int destination, const struct stat& now,
                                              const std::filesystem::path& path)
{
    if (now.st_uid == status.st_uid && now.st_gid == status.st_gid)
        return KeptOwner{true, true, false};
    if (::fchown(destination, status.st_uid, status.st_gid) == 0)
        return KeptOwner{true, true, true};
    if (errno != EPERM)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    if (::fchown(destination, static_cast<uid_t>(-1), status.st_gid) != 0 && errno != EPERM)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    struct stat after {};
    if (::fstat(destination, &after) != 0)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    return KeptOwner{after.st_uid == status.st_uid, after.st_gid == status.st_gid, true};
}

} // namespace

std::expected<void, CopyError> copy(int source, const struct stat& status, int destination,
                                    const std::filesystem::path& path)
{
    // Owner first: a chown clears setuid and setgid, and as a non-owner we could no longer set
    // anything else. The attributes go before the mode because writing them needs write
    // permission, which a read-only mode would take away; an ACL changes the group bits, which
    // the mode below sets back consistently.
    struct stat now {};
    if (::fstat(destination, &now) != 0)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    auto owner = copyOwner(status, destination, now, path);
    if (!owner)
        return std::unexpected(owner.error());
    auto attributes = copyExtendedAttributes(source, destination, path);
    if (!attributes)
        return std::unexpected(attributes.error());

    mode_t mode = status.st_mode & 07777;
    if (!owner->user)
        mode &= ~mode_t{S_ISUID};
    if (!owner->group)
        mode &= ~mode_t{S_ISGID};
    // The copy is ours (or root gave it away and may still change it), so EPERM here comes from
    // a file system that cannot store these bits (FAT, some FUSE and network file systems),
    // where the copy simply gets the mode the mount gives every file. A copy created with the
    // right bits and no ACL set since needs no chmod.
    const bool modeKept = !owner->changed && !*attributes && (now.st_mode & 07777) == mode;
    if (!modeKept && ::fchmod(destination, mode) != 0 && errno != EPERM)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));

    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    if (::futimens(destination, times) != 0)
        return std::unexpected(CopyError::system(CopyStep::setTimes, errno, path));
    return {};
}

std::expected<void, CopyError> copyToLink(const struct stat& status, int folder, const std::filesystem::path& name,
                                          const std::filesystem::path& path)
{
    if (::fchownat(folder, name.c_str(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) != 0 && errno != EPERM)
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, path));
    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    if (::utimensat(folder, name.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        return std::unexpected(CopyError::system(CopyStep::setTimes, errno, path));
    return {};
}

} // namespace orbisk::FileMetadata
