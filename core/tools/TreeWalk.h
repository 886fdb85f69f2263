// A walk over a folder tree by descriptors: getdents64 and *at calls relative to open folders.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/OwnedFd.h"

namespace orbisk {

/// Reads a tree one folder at a time: all of a folder's entries are handed to the visitor before
/// any of its subfolders is opened. No path is built for an item unless the visitor asks for its
/// folder's. Links are never followed below the root. However deep the tree, at most a budget of
/// descriptors is open: when the budget is spent, the shallowest open folder (below the root) is
/// closed and later reopened name by name from an open ancestor, checked against the device and
/// inode it had. One walk per object; not thread-safe.
class TreeWalk {
public:
    /// What the visitor decides for one entry.
    enum class Step {
        skip,    ///< go on with the next entry
        descend, ///< read this entry as a folder once the current folder is done
        stop,    ///< end the walk now
    };

    /// The folder whose entries are being visited; valid during those calls only.
    class Folder {
    public:
        /// A descriptor of the folder, for fstatat and openat relative to it.
        [[nodiscard]] int fd() const;
        /// The folder's path (the root as given, without trailing "/"), built on first request
        /// and shared by every later request for this folder.
        [[nodiscard]] const std::shared_ptr<const std::string>& path() const;
        /// Whether the folder holds an entry called ".hidden".
        [[nodiscard]] bool hasHiddenList() const;
        /// The folder's own status, from fstat on its descriptor.
        [[nodiscard]] const struct stat& status() const;

    private:
        friend class TreeWalk;
        Folder(TreeWalk& walk, std::size_t index) : walk_(walk), index_(index) {}
        TreeWalk& walk_;
        std::size_t index_;
    };

    /// One directory entry. name is NUL-terminated, so name.data() may go to a system call; type
    /// is the DT_ value from the directory (DT_UNKNOWN where the file system gives none).
    struct Entry {
        std::string_view name;
        unsigned char type;
    };

    /// Receives the walk. Every callback runs on the walking thread.
    class Visitor {
    public:
        virtual ~Visitor() = default;
        /// A subfolder queued with Step::descend was opened: false leaves it unread. The root is
        /// not offered here.
        virtual bool enter(const struct stat& status) = 0;
        /// One entry of folder ("." and ".." are never offered).
        virtual Step visit(Folder& folder, const Entry& entry) = 0;
        /// A folder could not be opened or read (errno given); the walk goes on. parent is null
        /// for the root.
        virtual void unreadable(Folder* parent, std::string_view name, int error) = 0;
    };

    /// A walk from root; descriptorBudget counts the root and is at least 2.
    explicit TreeWalk(std::filesystem::path root, std::size_t descriptorBudget = defaultDescriptorBudget());
    TreeWalk(const TreeWalk&) = delete;
    TreeWalk& operator=(const TreeWalk&) = delete;

    /// Walks the whole tree; false when the visitor stopped it. The root is followed when it is a
    /// link; when it cannot be opened, unreadable() is called with a null parent.
    bool run(Visitor& visitor);

    /// An eighth of the process's descriptor limit, between 16 and 256.
    [[nodiscard]] static std::size_t defaultDescriptorBudget();

private:
    struct Frame {
        OwnedFd fd;
        struct stat status {};
        std::string name;                                ///< relative to the parent frame
        std::string pending;                             ///< subfolder names to read, each ending in NUL
        std::size_t next = 0;                            ///< where the next pending name starts
        mutable std::shared_ptr<const std::string> path; ///< built on request
        bool hasHiddenList = false;
    };

    bool readFolder(Visitor& visitor);
    bool reopen(std::size_t index);
    void makeRoomForOneMore();
    const std::shared_ptr<const std::string>& pathOf(std::size_t index) const;

    std::filesystem::path root_;
    std::size_t budget_;
    std::size_t openCount_ = 0;
    std::vector<Frame> frames_;
    std::vector<char> entries_; ///< the raw getdents64 records of the folder being read
};

} // namespace orbisk
