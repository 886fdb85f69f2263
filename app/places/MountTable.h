// The mounted file systems as /proc/self/mountinfo lists them: which volume holds a folder.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

struct Mount {
    std::filesystem::path mountPoint; ///< bytes as the kernel gives them, octal escapes undone
    std::string fileSystemType;
    std::string source;
};

namespace MountTable {

/// Parses the text of a mountinfo file; lines that do not parse are skipped.
[[nodiscard]] std::vector<Mount> parse(std::string_view mountinfo);

/// The current mounts of this process (empty when /proc is not mounted).
[[nodiscard]] std::vector<Mount> current();

/// The mount point that holds path: the longest mount point that path is the same as or inside.
/// Paths are compared by text; "/" when nothing else matches.
[[nodiscard]] std::filesystem::path mountPointOf(const std::filesystem::path& path, const std::vector<Mount>& mounts);

/// Whether mountPoint is still mounted.
[[nodiscard]] bool isMounted(const std::filesystem::path& mountPoint, const std::vector<Mount>& mounts);

/// The volumes a user expects among the places: removable and extra disks under /media, /run/media
/// and /mnt, in the table's order.
[[nodiscard]] std::vector<Mount> userVolumes(const std::vector<Mount>& mounts);

} // namespace MountTable
} // namespace orbisk
