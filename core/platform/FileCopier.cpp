#include "platform/FileCopier.h"

#include "platform/ExclusiveRename.h"
#include "platform/FileDataCopy.h"
#include "platform/FileMetadata.h"
#include "platform/OwnedFd.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace orbisk::FileCopier {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view temporaryMarker = ".ob-copying-";
constexpr std::size_t randomDigits = 8;
constexpr std::size_t maxNameBytes = 255;
constexpr int temporaryAttempts = 16;
// Up to this size a copy costs about what looking for a taken name first costs, so the copy
// simply goes ahead and the final exclusive link or rename finds the clash.
constexpr off_t checkNameAbove = off_t{1} << 20;

// Creates a fresh temporary entry beside `to` with `create`, which returns 0 or an errno; a
// name that happens to be taken is retried with new random digits.
std::expected<fs::path, int> createTemporary(const fs::path& to, const std::function<int(const fs::path&)>& create)
{
    const fs::path folder = to.parent_path();
    for (int attempt = 0; attempt < temporaryAttempts; ++attempt) {
        fs::path candidate = folder / temporaryName(to.filename().native());
        const int code = create(candidate);
        if (code == 0)
            return candidate;
        if (code != EEXIST)
            return std::unexpected(code);
    }
    return std::unexpected(EEXIST);
}

// Removes the temporary entry unless the copy reached its final name. If the removal itself
// fails, the entry stays under its recognisable name; there is nothing better to do here.
class TemporaryEntry {
public:
    explicit TemporaryEntry(fs::path path) : path_(std::move(path)) {}
    ~TemporaryEntry()
    {
        if (!kept_)
            ::unlink(path_.c_str());
    }
    TemporaryEntry(const TemporaryEntry&) = delete;
    TemporaryEntry& operator=(const TemporaryEntry&) = delete;

    [[nodiscard]] const fs::path& path() const { return path_; }
    void keep() { kept_ = true; }

private:
    fs::path path_;
    bool kept_ = false;
};

std::expected<void, CopyError> giveFinalName(TemporaryEntry& temporary, const fs::path& to)
{
    if (auto renamed = ExclusiveRename::rename(temporary.path(), to); !renamed)
        return std::unexpected(CopyError::system(CopyStep::rename, renamed.error(), to));
    temporary.keep();
    return {};
}

bool isSpecialFile(mode_t mode)
{
    return S_ISCHR(mode) || S_ISBLK(mode) || S_ISFIFO(mode) || S_ISSOCK(mode);
}

// Opens the regular file `from` for reading without following a link and without blocking on a
// fifo that took its place after it was inspected (by us, or by the caller when `inspected` is
// given); fills in its status.
std::expected<OwnedFd, CopyError> openSource(const EntryAt& from, const struct stat* inspected, struct stat& status)
{
    if (!inspected) {
        if (::fstatat(from.folder, from.name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            return std::unexpected(CopyError::system(CopyStep::inspectSource, errno, from.path));
        inspected = &status;
    }
    if (isSpecialFile(inspected->st_mode))
        return std::unexpected(CopyError::unsupportedFileType(from.path));
    OwnedFd source(::openat(from.folder, from.name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!source.isOpen())
        return std::unexpected(CopyError::system(CopyStep::openSource, errno, from.path));
    if (::fstat(source.get(), &status) != 0)
        return std::unexpected(CopyError::system(CopyStep::inspectSource, errno, from.path));
    if (isSpecialFile(status.st_mode))
        return std::unexpected(CopyError::unsupportedFileType(from.path));
    if (S_ISDIR(status.st_mode))
        return std::unexpected(CopyError::system(CopyStep::openSource, EISDIR, from.path));
    // F_SETFL only touches the status flags, none of which we set besides O_NONBLOCK.
    if (::fcntl(source.get(), F_SETFL, 0) != 0)
        return std::unexpected(CopyError::system(CopyStep::openSource, errno, from.path));
    return source;
}

// Gives the unnamed file `file` the name `to`. Since Linux 6.10 whoever opened the file may link
// it by its descriptor (AT_EMPTY_PATH); before, that needed a privilege and failed with ENOENT,
// and the way through /proc/self/fd, a symbolic-link lookup more per file, is what remains.
std::expected<void, int> linkUnnamed(int file, const EntryAt& to)
{
    static std::atomic<bool> byDescriptor = true;
    if (byDescriptor) {
        if (::linkat(file, "", to.folder, to.name, AT_EMPTY_PATH) == 0)
            return {};
        if (errno != ENOENT)
            return std::unexpected(errno);
        // Most likely the missing privilege (a taken name gives EEXIST); a folder removed
        // meanwhile gives ENOENT too, which only costs later copies the faster way.
        byDescriptor = false;
    }
    const std::string self = "/proc/self/fd/" + std::to_string(file);
    if (::linkat(AT_FDCWD, self.c_str(), to.folder, to.name, AT_SYMLINK_FOLLOW) != 0)
        return std::unexpected(errno);
    return {};
}

// The fast way to the same guarantee: the copy is written into an unnamed file (O_TMPFILE) in the
// destination folder and linked under its final name only when complete. linkat never replaces
// an existing name, and a crash leaves nothing at all behind. The unnamed file is created with the source's permission
// bits already (nobody can open it by name before it is complete), so that a matching mode spares
// a chmod; only owner write stays on, which copying extended attributes needs. Returns nothing when the file system or
// the system cannot do this, so that the caller falls back to a hidden temporary name.
std::optional<std::expected<CopyOutcome, CopyError>> copyUnnamed(int source, const struct stat& status,
                                                                 const EntryAt& from, const EntryAt& to,
                                                                 const CopyProgress& progress,
                                                                 const CopyOptions& options)
{
    std::string parent;
    const char* folder = ".";
    if (to.folder == AT_FDCWD && to.path.has_parent_path()) {
        parent = to.path.parent_path().native();
        folder = parent.c_str();
    }
    OwnedFd destination(
        ::openat(to.folder, folder, O_TMPFILE | O_WRONLY | O_CLOEXEC, (status.st_mode & 0777) | S_IWUSR));
    if (!destination.isOpen()) {
        if (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)
            return std::nullopt;
        return std::unexpected(CopyError::system(CopyStep::createDestination, errno, to.path));
    }
    auto copied = FileDataCopy::copy(source, destination.get(), status, options, progress, from.path, to.path);
    if (!copied || *copied == CopyOutcome::cancelled)
        return copied;
    if (auto metadata = FileMetadata::copy(source, status, destination.get(), to.path); !metadata)
        return std::unexpected(metadata.error());
    if (auto linked = linkUnnamed(destination.get(), to); !linked) {
        if (linked.error() == ENOENT && ::access("/proc/self/fd", F_OK) != 0)
            return std::nullopt; // no /proc: the data is copied again the other way
        return std::unexpected(CopyError::system(CopyStep::rename, linked.error(), to.path));
    }
    if (const int code = destination.close(); code != 0) {
        ::unlinkat(to.folder, to.name, 0);
        return std::unexpected(CopyError::system(CopyStep::writeDestination, code, to.path));
    }
    return CopyOutcome::copied;
}

} // namespace

std::expected<CopyOutcome, CopyError> copyFile(const fs::path& from, const fs::path& to, const CopyProgress& progress,
                                               const CopyOptions& options, const struct stat* inspected)
{
    return copyFileAt({AT_FDCWD, from.c_str(), from}, {AT_FDCWD, to.c_str(), to}, progress, options, inspected);
}

std::expected<CopyOutcome, CopyError> copyFileAt(const EntryAt& from, const EntryAt& to, const CopyProgress& progress,
                                                 const CopyOptions& options, const struct stat* inspected,
                                                 struct stat* copied)
{
    if (progress && progress(0) == CopyControl::stop)
        return CopyOutcome::cancelled;

    struct stat status {};
    auto source = openSource(from, inspected, status);
    if (!source)
        return std::unexpected(source.error());
    if (copied)
        *copied = status;

    // Only a shortcut so that a taken name does not cost a whole copy first: the exclusive
    // link or rename at the end is what guarantees that nothing is ever replaced.
    struct stat existing {};
    if (status.st_size > checkNameAbove && ::fstatat(to.folder, to.name, &existing, AT_SYMLINK_NOFOLLOW) == 0)
        return std::unexpected(CopyError::system(CopyStep::createDestination, EEXIST, to.path));

    if (auto unnamed =
            options.unnamedFile ? copyUnnamed(source->get(), status, from, to, progress, options) : std::nullopt;
        unnamed)
        return *unnamed;

    // The fallback is rare (file systems without unnamed files), so it works with whole paths.
    OwnedFd destination;
    auto created = createTemporary(to.path, [&destination](const fs::path& candidate) {
        destination = OwnedFd(::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        return destination.isOpen() ? 0 : errno;
    });
    if (!created)
        return std::unexpected(CopyError::system(CopyStep::createDestination, created.error(), to.path));
    TemporaryEntry temporary(std::move(*created));

    auto data = FileDataCopy::copy(source->get(), destination.get(), status, options, progress, from.path, to.path);
    if (!data || *data == CopyOutcome::cancelled)
        return data;
    if (auto metadata = FileMetadata::copy(source->get(), status, destination.get(), to.path); !metadata)
        return std::unexpected(metadata.error());
    if (const int code = destination.close(); code != 0)
        return std::unexpected(CopyError::system(CopyStep::writeDestination, code, to.path));
    if (auto named = giveFinalName(temporary, to.path); !named)
        return std::unexpected(named.error());
    return CopyOutcome::copied;
}

std::expected<void, CopyError> copyLink(const fs::path& from, const fs::path& to)
{
    struct stat status {};
    if (::lstat(from.c_str(), &status) != 0)
        return std::unexpected(CopyError::system(CopyStep::inspectSource, errno, from));
    if (!S_ISLNK(status.st_mode))
        return std::unexpected(CopyError::system(CopyStep::readLink, EINVAL, from));

    // st_size is the target's length, but the link may change in between: a result that fills
    // the buffer could be cut short, so read again with more room.
    std::vector<char> target(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        const ssize_t length = ::readlink(from.c_str(), target.data(), target.size());
        if (length < 0)
            return std::unexpected(CopyError::system(CopyStep::readLink, errno, from));
        if (static_cast<std::size_t>(length) < target.size()) {
            target.resize(static_cast<std::size_t>(length));
            break;
        }
        target.resize(target.size() * 2);
    }
    target.push_back('\0');

    auto created = createTemporary(to, [&target](const fs::path& candidate) {
        return ::symlink(target.data(), candidate.c_str()) == 0 ? 0 : errno;
    });
    if (!created)
        return std::unexpected(CopyError::system(CopyStep::createLink, created.error(), to));
    TemporaryEntry temporary(std::move(*created));
    if (auto metadata = FileMetadata::copyToLink(status, AT_FDCWD, temporary.path(), to); !metadata)
        return metadata;
    return giveFinalName(temporary, to);
}

std::expected<void, CopyError> createFolder(const fs::path& to)
{
    if (::mkdir(to.c_str(), 0700) != 0)
        return std::unexpected(CopyError::system(CopyStep::createFolder, errno, to));
    return {};
}

std::expected<void, CopyError> copyFolderMetadata(const fs::path& from, const fs::path& to)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    OwnedFd source(::open(from.c_str(), flags));
    if (!source.isOpen())
        return std::unexpected(CopyError::system(CopyStep::openSource, errno, from));
    struct stat status {};
    if (::fstat(source.get(), &status) != 0)
        return std::unexpected(CopyError::system(CopyStep::inspectSource, errno, from));
    OwnedFd destination(::open(to.c_str(), flags));
    if (!destination.isOpen())
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, to));
    return FileMetadata::copy(source.get(), status, destination.get(), to);
}

std::expected<void, CopyError> copyFolderMetadata(int from, const fs::path& to)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    struct stat status {};
    if (::fstat(from, &status) != 0)
        return std::unexpected(CopyError::system(CopyStep::inspectSource, errno, to));
    OwnedFd destination(::open(to.c_str(), flags));
    if (!destination.isOpen())
        return std::unexpected(CopyError::system(CopyStep::setAttributes, errno, to));
    auto copied = FileMetadata::copy(from, status, destination.get(), to);
    if (!copied)
        (void)::fchmod(destination.get(), status.st_mode & 0777);
    return copied;
}

std::string temporaryName(std::string_view name)
{
    // Seeded once per thread from the kernel: a system call per copied file would show when
    // copying many small files, and the digits only need to make clashes unlikely (a clash is
    // retried by the caller).
    thread_local std::mt19937 generator = [] {
        std::uint32_t seed = 0;
        if (::getrandom(&seed, sizeof seed, 0) != sizeof seed)
            seed = static_cast<std::uint32_t>(::getpid()) ^ static_cast<std::uint32_t>(::time(nullptr));
        return std::mt19937(seed);
    }();
    const std::uint32_t random = generator();

    constexpr std::size_t room = maxNameBytes - 1 - temporaryMarker.size() - randomDigits;
    std::size_t keep = std::min(name.size(), room);
    // Cut before a UTF-8 continuation byte rather than in the middle of a character.
    while (keep > 0 && keep < name.size() && (static_cast<unsigned char>(name[keep]) & 0xC0) == 0x80)
        --keep;

    std::string result;
    result.reserve(1 + keep + temporaryMarker.size() + randomDigits);
    result += '.';
    result += name.substr(0, keep);
    result += temporaryMarker;
    constexpr std::string_view hex = "0123456789abcdef";
    for (std::size_t digit = 0; digit < randomDigits; ++digit)
        result += hex[(random >> (4 * digit)) & 0x0F];
    return result;
}

bool isTemporaryName(std::string_view name)
{
    const std::size_t suffix = temporaryMarker.size() + randomDigits;
    if (name.size() < 1 + suffix || name.front() != '.')
        return false;
    const std::string_view tail = name.substr(name.size() - suffix);
    return tail.starts_with(temporaryMarker) &&
           tail.substr(temporaryMarker.size()).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

} // namespace orbisk::FileCopier
