// Writing a text file back: through links to their targets, in place for hard-linked files, else
// by a flushed temporary file that takes over the original's metadata and is renamed over it.
#include "text/TextFile.h"

#include "platform/FileMetadata.h"
#include "platform/OwnedFd.h"
#include "support/Uuid.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <fstream>

namespace orbisk::TextFile {
namespace {

using Path = std::filesystem::path;

std::unexpected<TextFileError> failure(int code, const Path& path)
{
    return std::unexpected(TextFileError::system(code, "save", path));
}

// The file a save writes: the path itself, or the end of its chain of symbolic links, so that
// the link stays a link and its target gets the text. A dangling link names the file to create.
std::expected<Path, TextFileError> resolveLinks(const Path& path)
{
    Path at = std::filesystem::absolute(path);
    for (int hops = 0;; ++hops) {
        struct stat status {};
        if (::lstat(at.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
            return at;
        if (hops == 40)
            return failure(ELOOP, path);
        std::string target(PATH_MAX, '\0');
        const ssize_t length = ::readlink(at.c_str(), target.data(), target.size());
        if (length < 0)
            return failure(errno, path);
        target.resize(static_cast<std::size_t>(length));
        const Path next(target);
        at = next.is_absolute() ? next : at.parent_path() / next;
    }
}

std::expected<void, int> writeAll(int fd, std::string_view bytes, off_t offset)
{
    while (!bytes.empty()) {
        const ssize_t wrote = ::pwrite(fd, bytes.data(), bytes.size(), offset);
        if (wrote < 0) {
            if (errno == EINTR)
                continue;
            return std::unexpected(errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(wrote));
        offset += wrote;
    }
    return {};
}

std::expected<std::string, int> readAll(int fd, std::int64_t size)
{
    std::string data(static_cast<std::size_t>(size), '\0');
    std::size_t used = 0;
    while (used < data.size()) {
        const ssize_t got = ::pread(fd, data.data() + used, data.size() - used, static_cast<off_t>(used));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return std::unexpected(errno);
        if (got == 0)
            break;
        used += static_cast<std::size_t>(got);
    }
    data.resize(used);
    return data;
}

// The mode a new file gets from open(0666): the process's umask read without changing it.
mode_t newFileMode()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("Umask:"))
            return 0666 & ~static_cast<mode_t>(std::stoul(line.substr(6), nullptr, 8));
    }
    return 0644;
}

bool stillAsExpected(const Path& target, const std::optional<FileStamp>& expected, TextFileError& error)
{
    if (!expected)
        return true;
    const auto now = stamp(target);
    if (!now)
        error = TextFileError::of(TextFileError::Kind::missingOnDisk);
    else if (*now != *expected)
        error = TextFileError::of(TextFileError::Kind::modifiedOnDisk);
    return now && *now == *expected;
}

// Rewrites the file itself, for files with several hard links (a rename would split them: the
// other names would keep the old text) and for files in a folder we may not create entries in.
// The old bytes stay in memory until the new ones are on the disk; when the new ones do not fit
// or a write fails, the old bytes are written back. Space for a longer text is reserved first,
// so a full volume is usually refused before anything is touched. A crash in the middle of the
// write can still leave a mixed file; that is the price of keeping every link intact.
std::expected<FileStamp, TextFileError> saveInPlace(std::string_view bytes, const Path& target,
                                                    const std::optional<FileStamp>& expected)
{
    OwnedFd fd(::open(target.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isOpen())
        return failure(errno, target);
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0)
        return failure(errno, target);
    if (!S_ISREG(status.st_mode))
        return std::unexpected(TextFileError::notRegularFile(target));
    if (expected && FileStamp::of(status) != *expected)
        return std::unexpected(TextFileError::of(TextFileError::Kind::modifiedOnDisk));
    auto old = readAll(fd.get(), status.st_size);
    if (!old)
        return failure(old.error(), target);

    const auto newSize = static_cast<off_t>(bytes.size());
    if (newSize > status.st_size && ::fallocate(fd.get(), 0, 0, newSize) != 0 && errno != EOPNOTSUPP) {
        const int code = errno;
        (void)::ftruncate(fd.get(), status.st_size); // a partial reservation must not lengthen the file
        return failure(code, target);
    }
    auto written = writeAll(fd.get(), bytes, 0);
    if (written && ::ftruncate(fd.get(), newSize) != 0)
        written = std::unexpected(errno);
    if (written && ::fsync(fd.get()) != 0)
        written = std::unexpected(errno);
    if (!written) {
        if (writeAll(fd.get(), *old, 0))
            (void)::ftruncate(fd.get(), status.st_size);
        (void)::fsync(fd.get());
        return failure(written.error(), target);
    }
    if (::fstat(fd.get(), &status) != 0)
        return failure(errno, target);
    if (const int code = fd.close(); code != 0)
        return failure(code, target);
    return FileStamp::of(status);
}

struct Replaced {
    std::expected<FileStamp, TextFileError> result;
    bool folderRefused = false; ///< no temporary file could be made: the folder is not writable
};

Replaced saveByReplacing(std::string_view bytes, const Path& target, const struct stat* original,
                         const std::optional<FileStamp>& expected)
{
    const Path folder = target.parent_path();
    OwnedFd directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen())
        return {failure(errno, target)};
    // A hidden name beside the target, short enough for any name the target may have.
    const std::string name = target.filename().native();
    const std::string temporary = "." + name.substr(0, 200) + ".ob-saving-" + Uuid::random().substr(0, 8);
    OwnedFd fd(::openat(directory.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!fd.isOpen()) {
        const int code = errno;
        return {failure(code, target), code == EACCES || code == EPERM};
    }
    struct Remove {
        int folder;
        const std::string& name;
        bool keep = false;
        ~Remove()
        {
            if (!keep)
                ::unlinkat(folder, name.c_str(), 0);
        }
    } remove{directory.get(), temporary};

    if (auto written = writeAll(fd.get(), bytes, 0); !written)
        return {failure(written.error(), target)};
    if (original) {
        // The original's owner, extended attributes, ACLs and mode, read through a descriptor so
        // that nothing is taken from a file swapped in under its name. The copier also carries
        // times over; a saved file is new content, so its times are set to now afterwards.
        OwnedFd source(::open(target.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (!source.isOpen())
            return {failure(errno, target)};
        struct stat status {};
        if (::fstat(source.get(), &status) != 0)
            return {failure(errno, target)};
        if (auto copied = FileMetadata::copy(source.get(), status, fd.get(), target); !copied)
            return {failure(copied.error().code, target)};
        if (::futimens(fd.get(), nullptr) != 0)
            return {failure(errno, target)};
    } else if (::fchmod(fd.get(), newFileMode()) != 0) {
        return {failure(errno, target)};
    }
    if (::fsync(fd.get()) != 0)
        return {failure(errno, target)};
    struct stat saved {};
    if (::fstat(fd.get(), &saved) != 0)
        return {failure(errno, target)};
    if (const int code = fd.close(); code != 0)
        return {failure(code, target)};

    // Checked again right before the rename: the window in which another program's change could
    // still be replaced unseen is this one system call wide.
    TextFileError changed;
    if (!stillAsExpected(target, expected, changed))
        return {std::unexpected(changed)};
    if (::renameat(directory.get(), temporary.c_str(), directory.get(), name.c_str()) != 0)
        return {failure(errno, target)};
    remove.keep = true;
    // The rename is only durable once the folder is; file systems without folder fsync say EINVAL.
    if (::fsync(directory.get()) != 0 && errno != EINVAL && errno != EROFS)
        return {failure(errno, target)};
    return {FileStamp::of(saved)};
}

} // namespace

std::expected<FileStamp, TextFileError> save(std::string_view text, const std::filesystem::path& path,
                                             TextEncodingKind encoding, LineEnding lineEnding,
                                             const std::optional<FileStamp>& expected)
{
    auto target = resolveLinks(path);
    if (!target)
        return std::unexpected(target.error());
    TextFileError changed;
    if (!stillAsExpected(*target, expected, changed))
        return std::unexpected(changed);
    const auto bytes = encode(text, encoding, lineEnding);
    if (!bytes)
        return std::unexpected(TextFileError::of(TextFileError::Kind::cannotEncode));

    struct stat status {};
    const bool exists = ::lstat(target->c_str(), &status) == 0;
    if (!exists && errno != ENOENT)
        return failure(errno, *target);
    if (exists && !S_ISREG(status.st_mode))
        return std::unexpected(TextFileError::notRegularFile(*target));
    // Several hard links: rewritten in place, so that every name still shows the same file.
    if (exists && status.st_nlink > 1)
        return saveInPlace(*bytes, *target, expected);
    auto replaced = saveByReplacing(*bytes, *target, exists ? &status : nullptr, expected);
    // A folder we may not write in, holding a file we may: the file is rewritten in place. When
    // the file is not writable either, the in-place open fails and says so; nothing was touched.
    if (replaced.folderRefused && exists)
        return saveInPlace(*bytes, *target, expected);
    return replaced.result;
}

} // namespace orbisk::TextFile
