#include "files/DirectoryReader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_set>

namespace orbisk::DirectoryReader {
namespace {

constexpr std::size_t hiddenListLimit = 1 << 20; // a .hidden file larger than this is not a list of names

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

FileItem::Date dateOf(const struct stat& st)
{
    return FileItem::Date(std::chrono::seconds(st.st_mtim.tv_sec) + std::chrono::nanoseconds(st.st_mtim.tv_nsec));
}

/// Fills everything but the location and the hidden flag from the entry's own lstat result (or
/// nothing when it failed), asking once more through a link for what the link leads to.
void describeEntry(FileItem& item, int folderFd, const char* name, const struct stat* own)
{
    if (own == nullptr)
        return;
    item.isSymbolicLink = S_ISLNK(own->st_mode);
    bool directory = S_ISDIR(own->st_mode);
    if (item.isSymbolicLink) {
        struct stat target {};
        directory = ::fstatat(folderFd, name, &target, 0) == 0 && S_ISDIR(target.st_mode);
    }
    item.isDirectory = directory;
    if (!directory)
        item.size = static_cast<std::int64_t>(own->st_size);
    item.modificationDate = dateOf(*own);
}

/// The names listed one per line in a folder's .hidden file, the convention other Linux file
/// managers share. Lines are byte-exact names; empty lines are ignored.
class HiddenList {
public:
    HiddenList() = default;
    explicit HiddenList(int folderFd)
    {
        // O_NONBLOCK: a fifo called .hidden must not hang the listing; only regular files count.
        const int fd = ::openat(folderFd, ".hidden", O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        if (fd < 0)
            return;
        struct stat st {};
        if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && static_cast<std::size_t>(st.st_size) <= hiddenListLimit)
            load(fd);
        ::close(fd);
    }

    [[nodiscard]] bool contains(const std::string& name) const { return !names_.empty() && names_.contains(name); }

private:
    void load(int fd)
    {
        std::string contents;
        char buffer[8192];
        for (;;) {
            const auto got = ::read(fd, buffer, sizeof buffer);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0 || contents.size() + static_cast<std::size_t>(got) > hiddenListLimit)
                break;
            contents.append(buffer, static_cast<std::size_t>(got));
        }
        std::size_t start = 0;
        while (start < contents.size()) {
            auto end = contents.find('\n', start);
            if (end == std::string::npos)
                end = contents.size();
            if (end > start)
                names_.emplace(contents, start, end - start);
            start = end + 1;
        }
    }

    std::unordered_set<std::string> names_;
};

bool isDotName(std::string_view name)
{
    return !name.empty() && name.front() == '.';
}

std::string folderText(const std::filesystem::path& folder)
{
    std::string text = folder.native();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

} // namespace

std::expected<std::vector<FileItem>, std::error_code> read(const std::filesystem::path& folder, bool includeHidden)
{
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return std::unexpected(lastError());
    DIR* rawDir = ::fdopendir(fd);
    if (rawDir == nullptr) {
        const auto error = lastError();
        ::close(fd);
        return std::unexpected(error);
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(rawDir, ::closedir);

    // First the names alone, packed into one buffer, so that the items can be allocated once at
    // their final count: growing a vector of 200,000 items would briefly hold it twice.
    std::string names;
    std::vector<std::uint32_t> ends;
    bool sawHiddenList = false;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(dir.get());
        if (entry == nullptr) {
            if (errno != 0)
                return std::unexpected(lastError());
            break;
        }
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        if (name == ".hidden")
            sawHiddenList = true;
        if (!includeHidden && isDotName(name))
            continue;
        names.append(name);
        ends.push_back(static_cast<std::uint32_t>(names.size()));
    }

    const HiddenList hidden = sawHiddenList ? HiddenList(fd) : HiddenList();
    const auto shared = std::make_shared<const std::string>(folderText(folder));
    std::vector<FileItem> items;
    items.reserve(ends.size());
    std::uint32_t start = 0;
    for (const auto end : ends) {
        FileItem item(shared, names.substr(start, end - start));
        start = end;
        item.isHidden = isDotName(item.name()) || hidden.contains(item.name());
        if (item.isHidden && !includeHidden)
            continue;
        struct stat own {};
        const bool known = ::fstatat(fd, item.name().c_str(), &own, AT_SYMLINK_NOFOLLOW) == 0;
        describeEntry(item, fd, item.name().c_str(), known ? &own : nullptr);
        items.push_back(std::move(item));
    }
    return items;
}

FileItem makeItem(const std::filesystem::path& path)
{
    FileItem item(path);
    const auto folder = std::string(item.folder().empty() ? std::string_view(".") : item.folder());
    const int fd = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    struct stat own {};
    const bool known = fd >= 0 && ::fstatat(fd, item.name().c_str(), &own, AT_SYMLINK_NOFOLLOW) == 0;
    if (fd >= 0)
        describeEntry(item, fd, item.name().c_str(), known ? &own : nullptr);
    item.isHidden = isDotName(item.name());
    if (!item.isHidden && fd >= 0) {
        // O_PATH descriptors cannot be read through; the list needs a real one.
        const int readable = ::openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (readable >= 0) {
            item.isHidden = HiddenList(readable).contains(item.name());
            ::close(readable);
        }
    }
    if (fd >= 0)
        ::close(fd);
    return item;
}

} // namespace orbisk::DirectoryReader
