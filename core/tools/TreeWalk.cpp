#include "tools/TreeWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orbisk {
namespace {

constexpr std::size_t readChunk = 64 * 1024;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;

std::string withoutTrailingSlashes(std::string text)
{
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

} // namespace

int TreeWalk::Folder::fd() const
{
    return walk_.frames_[index_].fd.get();
}

const std::shared_ptr<const std::string>& TreeWalk::Folder::path() const
{
    return walk_.pathOf(index_);
}

bool TreeWalk::Folder::hasHiddenList() const
{
    return walk_.frames_[index_].hasHiddenList;
}

const struct stat& TreeWalk::Folder::status() const
{
    return walk_.frames_[index_].status;
}

TreeWalk::TreeWalk(std::filesystem::path root, std::size_t descriptorBudget)
    : root_(std::move(root)), budget_(std::max<std::size_t>(descriptorBudget, 3))
{
}

std::size_t TreeWalk::defaultDescriptorBudget()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return 256;
    return std::clamp<std::size_t>(static_cast<std::size_t>(limit.rlim_cur) / 8, 16, 256);
}

bool TreeWalk::run(Visitor& visitor)
{
    frames_.clear();
    openCount_ = 0;
    // The root is what the caller asked for, so a link to a folder is followed there, and only there.
    OwnedFd rootFd(::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOCTTY));
    Frame root;
    if (!rootFd.isOpen() || ::fstat(rootFd.get(), &root.status) != 0) {
        visitor.unreadable(nullptr, root_.native(), errno);
        return true;
    }
    root.fd = std::move(rootFd);
    frames_.push_back(std::move(root));
    openCount_ = 1;
    if (!readFolder(visitor))
        return false;

    while (!frames_.empty()) {
        const std::size_t index = frames_.size() - 1;
        if (frames_[index].next >= frames_[index].pending.size()) {
            if (frames_[index].fd.isOpen())
                --openCount_;
            frames_.pop_back();
            continue;
        }
        if (!frames_[index].fd.isOpen()) {
            makeRoomForOneMore();
            if (!reopen(index)) {
                // The folder was moved or replaced while we were below it: what it still held
                // for us cannot be reached safely.
                const int error = errno;
                Frame& lost = frames_[index];
                for (; lost.next < lost.pending.size(); lost.next += std::strlen(lost.pending.data() + lost.next) + 1)
                    visitor.unreadable(nullptr, lost.pending.data() + lost.next, error);
                continue;
            }
        }
        Frame& top = frames_[index];
        std::string name(top.pending.data() + top.next);
        top.next += name.size() + 1;

        makeRoomForOneMore();
        OwnedFd child(::openat(top.fd.get(), name.c_str(), folderFlags));
        Frame next;
        if (!child.isOpen() || ::fstat(child.get(), &next.status) != 0) {
            const int error = errno;
            Folder parent(*this, index);
            visitor.unreadable(&parent, name, error);
            continue;
        }
        if (!visitor.enter(next.status))
            continue;
        next.fd = std::move(child);
        next.name = std::move(name);
        frames_.push_back(std::move(next));
        ++openCount_;
        if (!readFolder(visitor))
            return false;
    }
    return true;
}

bool TreeWalk::readFolder(Visitor& visitor)
{
    const std::size_t index = frames_.size() - 1;
    Frame& frame = frames_[index];
    entries_.clear();
    for (;;) {
        const std::size_t used = entries_.size();
        entries_.resize(used + readChunk);
        const auto got = ::getdents64(frame.fd.get(), entries_.data() + used, readChunk);
        if (got < 0) {
            const int error = errno;
            entries_.clear();
            // The folder opened but cannot be listed (an I/O error, a vanished network share).
            if (index == 0) {
                visitor.unreadable(nullptr, root_.native(), error);
            } else {
                Frame& parentFrame = frames_[index - 1];
                const std::string name = frame.name;
                if (parentFrame.fd.isOpen()) {
                    Folder parent(*this, index - 1);
                    visitor.unreadable(&parent, name, error);
                } else {
                    visitor.unreadable(nullptr, name, error);
                }
            }
            return true;
        }
        entries_.resize(used + static_cast<std::size_t>(got));
        if (got == 0)
            break;
    }

    const auto isDots = [](const char* name) {
        return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
    };
    for (std::size_t at = 0; at < entries_.size();) {
        const auto* record = reinterpret_cast<const dirent64*>(entries_.data() + at);
        at += record->d_reclen;
        if (std::strcmp(record->d_name, ".hidden") == 0) {
            frame.hasHiddenList = true;
            break;
        }
    }
    Folder folder(*this, index);
    for (std::size_t at = 0; at < entries_.size();) {
        const auto* record = reinterpret_cast<const dirent64*>(entries_.data() + at);
        at += record->d_reclen;
        if (isDots(record->d_name))
            continue;
        const Entry entry{std::string_view(record->d_name), record->d_type};
        switch (visitor.visit(folder, entry)) {
        case Step::skip: break;
        case Step::descend:
            frames_[index].pending.append(entry.name);
            frames_[index].pending.push_back('\0');
            break;
        case Step::stop: return false;
        }
    }
    return true;
}

bool TreeWalk::reopen(std::size_t index)
{
    std::size_t open = index;
    while (open > 0 && !frames_[open].fd.isOpen())
        --open;
    // The root is never closed, so an open ancestor always exists.
    int at = frames_[open].fd.get();
    OwnedFd current;
    for (std::size_t k = open + 1; k <= index; ++k) {
        OwnedFd next(::openat(at, frames_[k].name.c_str(), folderFlags));
        if (!next.isOpen())
            return false;
        current = std::move(next);
        at = current.get();
    }
    struct stat now {};
    if (::fstat(current.get(), &now) != 0)
        return false;
    if (now.st_dev != frames_[index].status.st_dev || now.st_ino != frames_[index].status.st_ino) {
        errno = ESTALE;
        return false;
    }
    frames_[index].fd = std::move(current);
    ++openCount_;
    return true;
}

void TreeWalk::makeRoomForOneMore()
{
    // The deepest frame is the one being worked on and the root is the anchor for reopening;
    // everything between may be closed, shallowest first, since it is needed again last.
    const std::size_t top = frames_.size() - 1;
    for (std::size_t i = 1; i < top && openCount_ >= budget_; ++i) {
        if (frames_[i].fd.isOpen()) {
            frames_[i].fd.reset();
            --openCount_;
        }
    }
}

const std::shared_ptr<const std::string>& TreeWalk::pathOf(std::size_t index) const
{
    const Frame& frame = frames_[index];
    if (!frame.path) {
        if (index == 0) {
            frame.path = std::make_shared<const std::string>(withoutTrailingSlashes(root_.native()));
        } else {
            const std::string& parent = *pathOf(index - 1);
            std::string text;
            text.reserve(parent.size() + 1 + frame.name.size());
            text.append(parent);
            if (text.empty() || text.back() != '/')
                text.push_back('/');
            text.append(frame.name);
            frame.path = std::make_shared<const std::string>(std::move(text));
        }
    }
    return frame.path;
}

} // namespace orbisk
