#include "zip/StagingTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace orbisk {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr std::size_t linkHops = 40;

std::string joined(std::span<const std::string> components)
{
    std::string path;
    for (const auto& c : components) {
        if (!path.empty())
            path += '/';
        path += c;
    }
    return path;
}

timespec secondsOf(std::optional<std::time_t> modified)
{
    return modified ? timespec{*modified, 0} : timespec{0, UTIME_OMIT};
}

} // namespace

std::expected<StagingTree, int> StagingTree::create(int parentFd, std::string name)
{
    if (::mkdirat(parentFd, name.c_str(), 0700) != 0)
        return std::unexpected(errno);
    OwnedFd root(::openat(parentFd, name.c_str(), folderFlags));
    if (!root.isOpen()) {
        const int error = errno;
        ::unlinkat(parentFd, name.c_str(), AT_REMOVEDIR);
        return std::unexpected(error);
    }
    return StagingTree(parentFd, std::move(name), std::move(root));
}

StagingTree::~StagingTree()
{
    remove();
}

std::expected<int, int> StagingTree::folder(std::span<const std::string> components)
{
    if (components.empty())
        return root_.get();
    if (cachedFd_.isOpen() && std::ranges::equal(cachedPath_, components))
        return cachedFd_.get();
    cachedFd_.reset();
    OwnedFd current;
    int at = root_.get();
    Components path;
    for (const auto& component : components) {
        path.push_back(component);
        int fd = ::openat(at, component.c_str(), folderFlags);
        if (fd < 0 && errno == ENOENT) {
            if (::mkdirat(at, component.c_str(), 0700) == 0)
                folders_.try_emplace(path);
            else if (errno != EEXIST)
                return std::unexpected(errno);
            fd = ::openat(at, component.c_str(), folderFlags);
        }
        // ELOOP: the component is a link; ENOTDIR: a file. Neither is walked through.
        if (fd < 0)
            return std::unexpected(errno == ELOOP ? ENOTDIR : errno);
        current = OwnedFd(fd);
        at = fd;
    }
    cachedPath_.assign(components.begin(), components.end());
    cachedFd_ = std::move(current);
    return cachedFd_.get();
}

void StagingTree::setFolderAttributes(const Components& components, FolderAttributes attributes)
{
    folders_[components] = attributes;
}

std::expected<OwnedFd, int> StagingTree::createFile(std::span<const std::string> components)
{
    const auto parent = folder(components.first(components.size() - 1));
    if (!parent)
        return std::unexpected(parent.error());
    OwnedFd fd(::openat(*parent, components.back().c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0600));
    if (!fd.isOpen())
        return std::unexpected(errno);
    return fd;
}

void StagingTree::removeFile(std::span<const std::string> components)
{
    if (const auto parent = folder(components.first(components.size() - 1)))
        ::unlinkat(*parent, components.back().c_str(), 0);
}

std::expected<void, int> StagingTree::createLink(std::span<const std::string> components, const std::string& target,
                                                 std::optional<std::time_t> modified)
{
    const auto parent = folder(components.first(components.size() - 1));
    if (!parent)
        return std::unexpected(parent.error());
    if (::symlinkat(target.c_str(), *parent, components.back().c_str()) != 0)
        return std::unexpected(errno);
    const timespec times[2] = {secondsOf(modified), secondsOf(modified)};
    ::utimensat(*parent, components.back().c_str(), times, AT_SYMLINK_NOFOLLOW);
    return {};
}

void StagingTree::removeLink(std::span<const std::string> components)
{
    if (const auto parent = folder(components.first(components.size() - 1)))
        ::unlinkat(*parent, components.back().c_str(), 0);
}

bool StagingTree::linkResolvesInside(std::span<const std::string> components, std::size_t minimumDepth) const
{
    // The walk keeps the real folders reached so far; links are read and their text put in front
    // of what is left, relative to the folder they are in. Where an entry is missing the rest is
    // followed by its text, as the kernel would once it appears.
    Components reached(components.begin(), components.end() - 1);
    std::vector<std::string> pending{components.back()};
    std::size_t hops = 0;
    bool missing = false;
    const auto pushText = [&](const std::string& text) {
        std::vector<std::string> pieces;
        std::size_t start = 0;
        while (start <= text.size()) {
            const auto end = std::min(text.find('/', start), text.size());
            pieces.emplace_back(text.substr(start, end - start));
            start = end + 1;
        }
        // pending is a stack: its back is the next piece.
        pending.insert(pending.end(), pieces.rbegin(), pieces.rend());
    };
    while (!pending.empty()) {
        std::string piece = std::move(pending.back());
        pending.pop_back();
        if (piece.empty() || piece == ".")
            continue;
        if (piece == "..") {
            if (reached.size() <= minimumDepth)
                return false;
            reached.pop_back();
            continue;
        }
        reached.push_back(piece);
        if (minimumDepth > 0 && reached.size() == 1 && reached.front() != components.front())
            return false; // from the root down into another top item, which is not part of the result
        if (missing)
            continue;
        struct stat status {};
        const std::string path = joined(reached);
        if (::fstatat(root_.get(), path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            missing = true;
            continue;
        }
        if (!S_ISLNK(status.st_mode))
            continue;
        if (++hops > linkHops)
            return false;
        std::string text(static_cast<std::size_t>(status.st_size > 0 ? status.st_size : 4096) + 1, '\0');
        const auto n = ::readlinkat(root_.get(), path.c_str(), text.data(), text.size());
        if (n < 0)
            return false;
        text.resize(static_cast<std::size_t>(n));
        if (text.empty() || text.front() == '/')
            return false;
        reached.pop_back();
        pushText(text);
    }
    return reached.size() >= minimumDepth;
}

std::vector<std::string> StagingTree::topNames() const
{
    std::vector<std::string> names;
    const int fd = ::openat(root_.get(), ".", folderFlags);
    if (fd < 0)
        return names;
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return names;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    ::closedir(dir);
    std::ranges::sort(names);
    return names;
}

void StagingTree::applyFolderAttributes(int baseFd, const std::optional<std::string>& topName) const
{
    std::vector<std::pair<Components, FolderAttributes>> list(folders_.begin(), folders_.end());
    // Deepest first: a parent's mode may take away the right to enter it.
    std::ranges::stable_sort(list, std::ranges::greater{}, [](const auto& item) { return item.first.size(); });
    for (auto [components, attributes] : list) {
        if (topName)
            components.front() = *topName;
        OwnedFd current;
        int at = baseFd;
        bool reached = true;
        for (const auto& component : components) {
            const int fd = ::openat(at, component.c_str(), folderFlags);
            if (fd < 0) {
                reached = false;
                break;
            }
            current = OwnedFd(fd);
            at = fd;
        }
        if (!reached)
            continue;
        ::fchmod(current.get(), attributes.mode & 0777);
        const timespec times[2] = {secondsOf(attributes.modified), secondsOf(attributes.modified)};
        ::futimens(current.get(), times);
    }
}

void StagingTree::remove()
{
    if (released_ || !root_.isOpen())
        return;
    cachedFd_.reset();
    root_.reset();
    removeTreeAt(parentFd_, name_);
    released_ = true;
}

void removeTreeAt(int dirFd, const std::string& name)
{
    struct stat status {};
    if (::fstatat(dirFd, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return;
    if (!S_ISDIR(status.st_mode)) {
        ::unlinkat(dirFd, name.c_str(), 0);
        return;
    }
    int fd = ::openat(dirFd, name.c_str(), folderFlags);
    if (fd >= 0 && (status.st_mode & 0700) != 0700) {
        // Without write and search rights on a folder nothing in it can be removed.
        ::fchmod(fd, 0700);
    } else if (fd < 0 && errno == EACCES) {
        ::fchmodat(dirFd, name.c_str(), 0700, 0);
        fd = ::openat(dirFd, name.c_str(), folderFlags);
    }
    if (fd >= 0) {
        DIR* dir = ::fdopendir(fd);
        if (dir) {
            std::vector<std::string> children;
            while (const dirent* entry = ::readdir(dir)) {
                const std::string_view child = entry->d_name;
                if (child != "." && child != "..")
                    children.emplace_back(child);
            }
            for (const auto& child : children)
                removeTreeAt(::dirfd(dir), child);
            ::closedir(dir);
        } else {
            ::close(fd);
        }
    }
    ::unlinkat(dirFd, name.c_str(), AT_REMOVEDIR);
}

} // namespace orbisk
