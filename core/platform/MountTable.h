// The mounted file systems, as the kernel lists them in /proc/self/mountinfo.
#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace orbisk {

/// One mounted file system. Paths are bytes, with the table's octal escapes ("\040") decoded.
struct MountEntry {
    dev_t device = 0;                 ///< the st_dev of files on it (a bind mount shares it)
    std::filesystem::path root;       ///< the folder of the file system that is mounted
    std::filesystem::path mountPoint; ///< where it is mounted
    std::string fileSystemType;       ///< "ext4", "tmpfs", "fuse.sshfs", …
    std::string source;               ///< "/dev/sda1", "tmpfs", …

    bool operator==(const MountEntry&) const = default;
};

/// A snapshot of the mount table. Renames work only within one entry: a bind mount of a folder has
/// the device of its file system, yet rename(2) across it fails with EXDEV.
class MountTable {
public:
    MountTable() = default;
    explicit MountTable(std::vector<MountEntry> entries) : entries_(std::move(entries)) {}

    /// Reads /proc/self/mountinfo (or another file of its format); the errno when it cannot be read.
    [[nodiscard]] static std::expected<MountTable, int>
    read(const std::filesystem::path& file = "/proc/self/mountinfo");

    /// Parses text in the mountinfo format; malformed lines are skipped.
    [[nodiscard]] static MountTable parse(std::string_view text);

    [[nodiscard]] const std::vector<MountEntry>& entries() const { return entries_; }

    /// The mount holding realPath: the one whose mount point is its longest leading run of whole
    /// components; of several at one mount point, the last mounted (the one on top). realPath must
    /// be absolute with no links or "..": resolve it first. Null when nothing matches.
    [[nodiscard]] const MountEntry* mountOf(const std::filesystem::path& realPath) const;

    /// The mount point holding path, "/" when nothing else does.
    [[nodiscard]] std::filesystem::path mountPointOf(const std::filesystem::path& path) const;

    /// The first mount whose mount point is realPath itself or lies inside it (by whole
    /// components), in the table's order; null when nothing is mounted there or below. realPath
    /// must be resolved, as for mountOf(). This is how a folder that holds another volume is told,
    /// bind mounts included, which share the device number of their file system.
    [[nodiscard]] const MountEntry* mountAtOrBelow(const std::filesystem::path& realPath) const;

    /// Whether something is mounted at mountPoint.
    [[nodiscard]] bool isMounted(const std::filesystem::path& mountPoint) const;

    /// The volumes a user expects among the places: removable and extra disks mounted below
    /// /media, /run/media and /mnt, each mount point once, in the table's order.
    [[nodiscard]] std::vector<MountEntry> userVolumes() const;

private:
    std::vector<MountEntry> entries_;
};

} // namespace orbisk
