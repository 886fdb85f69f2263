// The hidden folder an archive is unpacked into, reached only through descriptors that never
// follow a link, and everything that has to happen inside it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <expected>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/OwnedFd.h"

namespace orbisk {

/// Owns the staging folder until it is moved into place or removed. Every member is created by
/// walking its path one component at a time with openat(O_NOFOLLOW | O_DIRECTORY): a component
/// that is a link or a file stops the walk, so nothing is ever written through a link. Folders are
/// created 0700 and get their own modes only at the end (applyFolderAttributes), so that a folder
/// member of mode 0500 or 000 neither stops its children nor makes the staging folder impossible to
/// remove. Errors are errno values. Not shared between threads.
class StagingTree {
public:
    using Components = std::vector<std::string>;

    /// What a folder gets at the end: its mode (0755 unless the archive said) and its date.
    struct FolderAttributes {
        mode_t mode = 0755;
        std::optional<std::time_t> modified;
    };

    /// Creates the folder name (mode 0700) inside the folder open at parentFd.
    [[nodiscard]] static std::expected<StagingTree, int> create(int parentFd, std::string name);

    StagingTree(StagingTree&&) noexcept = default;
    StagingTree& operator=(StagingTree&&) noexcept = default;
    ~StagingTree();

    [[nodiscard]] int rootFd() const { return root_.get(); }
    [[nodiscard]] const std::string& name() const { return name_; }

    /// The folder at components (empty: the root), created with its missing parents. The
    /// descriptor stays ours: valid until the next call.
    [[nodiscard]] std::expected<int, int> folder(std::span<const std::string> components);

    /// Records what the folder at components gets at the end.
    void setFolderAttributes(const Components& components, FolderAttributes attributes);

    /// Creates a new file (exclusively, mode 0600) at components.
    [[nodiscard]] std::expected<OwnedFd, int> createFile(std::span<const std::string> components);

    /// Removes the file at components again (a member that failed half-way).
    void removeFile(std::span<const std::string> components);

    /// Creates the link at components with target as its text, dated modified when given.
    [[nodiscard]] std::expected<void, int> createLink(std::span<const std::string> components,
                                                      const std::string& target, std::optional<std::time_t> modified);

    /// Whether the link at components, followed through every link it meets inside the tree (and
    /// by its text where nothing exists), ends inside the tree without rising to fewer than
    /// minimumDepth components (1 when one top item becomes the result: it must stay inside that
    /// item). A loop or more than 40 links counts as outside.
    [[nodiscard]] bool linkResolvesInside(std::span<const std::string> components, std::size_t minimumDepth) const;

    /// Removes the link at components.
    void removeLink(std::span<const std::string> components);

    /// The names in the root, sorted by their bytes.
    [[nodiscard]] std::vector<std::string> topNames() const;

    /// Applies the recorded folder modes and dates, deepest first, to the tree that now lies at
    /// baseFd/…: topName replaces the first component when the single top item was moved out
    /// under a new name; with no topName the components are read from baseFd as they are.
    void applyFolderAttributes(int baseFd, const std::optional<std::string>& topName) const;

    /// Forgets the staging folder: it was moved into place as a whole.
    void release() { released_ = true; }

    /// Removes whatever is left of the staging folder (unless released).
    void remove();

private:
    StagingTree(int parentFd, std::string name, OwnedFd root)
        : parentFd_(parentFd), name_(std::move(name)), root_(std::move(root))
    {
    }

    int parentFd_ = -1;
    std::string name_;
    OwnedFd root_;
    bool released_ = false;
    Components cachedPath_;
    OwnedFd cachedFd_;
    std::map<Components, FolderAttributes> folders_;
};

/// Removes the entry name in the folder open at dirFd and, for a folder, everything inside it,
/// never following a link and giving back to folders the permissions it needs on the way.
void removeTreeAt(int dirFd, const std::string& name);

} // namespace orbisk
