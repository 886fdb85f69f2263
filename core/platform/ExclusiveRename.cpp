#include "platform/ExclusiveRename.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace orbisk::ExclusiveRename {
namespace fs = std::filesystem;

namespace {

using Result = std::expected<void, int>;

int renameNoReplace(int fromDir, const char* from, int toDir, const char* to)
{
    // Through syscall() so that an older C library without the wrapper still builds.
    return static_cast<int>(::syscall(SYS_renameat2, fromDir, from, toDir, to, RENAME_NOREPLACE));
}

// The file system does not know the flag: FUSE and network file systems say EINVAL or ENOSYS.
// EINVAL also means "a folder into itself"; the fallback then fails with the same EINVAL.
bool flagRefused(int error)
{
    return error == EINVAL || error == ENOSYS;
}

// Errors of link() that say "no hard links here" rather than "the name is taken".
bool linksUnsupported(int error)
{
    return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

// Reserves the target by creating something there exclusively, then renames over it. rename(2)
// may replace an empty folder with a folder and a file with a file, so the reservation is what
// makes it exclusive. If the rename fails, the reservation is taken away again.
Result renameOverPlaceholder(int fromDir, const char* from, int toDir, const char* to, bool folder)
{
    if (folder) {
        if (::mkdirat(toDir, to, 0700) != 0)
            return std::unexpected(errno);
    } else {
        const int fd = ::openat(toDir, to, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0)
            return std::unexpected(errno);
        ::close(fd);
    }
    if (::renameat(fromDir, from, toDir, to) == 0)
        return {};
    const int error = errno;
    // If someone filled the placeholder folder in the meantime, rmdir fails and it stays: their
    // entries are not ours to remove.
    ::unlinkat(toDir, to, folder ? AT_REMOVEDIR : 0);
    return std::unexpected(error);
}

Result linkThenUnlink(int fromDir, const char* from, int toDir, const char* to, bool& unsupported)
{
    // Without AT_SYMLINK_FOLLOW a symbolic link is linked itself, not its target.
    if (::linkat(fromDir, from, toDir, to, 0) != 0) {
        unsupported = linksUnsupported(errno);
        return std::unexpected(errno);
    }
    if (::unlinkat(fromDir, from, 0) == 0)
        return {};
    const int error = errno;
    ::unlinkat(toDir, to, 0);
    return std::unexpected(error);
}

Result fallback(int fromDir, const char* from, int toDir, const char* to, Method method)
{
    struct stat status {};
    if (::fstatat(fromDir, from, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::unexpected(errno);
    const bool folder = S_ISDIR(status.st_mode);
    if (folder || method == Method::placeholderOnly)
        return renameOverPlaceholder(fromDir, from, toDir, to, folder);
    bool unsupported = false;
    auto linked = linkThenUnlink(fromDir, from, toDir, to, unsupported);
    if (linked || !unsupported)
        return linked;
    return renameOverPlaceholder(fromDir, from, toDir, to, false);
}

} // namespace

Result renameAt(int fromDir, const fs::path& fromName, int toDir, const fs::path& toName, Method method)
{
    const char* from = fromName.c_str();
    const char* to = toName.c_str();
    if (method == Method::automatic) {
        if (renameNoReplace(fromDir, from, toDir, to) == 0)
            return {};
        if (!flagRefused(errno))
            return std::unexpected(errno);
    }
    return fallback(fromDir, from, toDir, to, method);
}

Result rename(const fs::path& from, const fs::path& to, Method method)
{
    return renameAt(AT_FDCWD, from, AT_FDCWD, to, method);
}

} // namespace orbisk::ExclusiveRename
