// Path helpers shared by the panes, the copy dialog and the tools: typed paths and containment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace orbisk::Paths {

/// The user's home folder: $HOME, else the password database, else "/".
[[nodiscard]] std::filesystem::path home();

/// A path as the user typed it: "~" and "~/…" name the home folder, an absolute path stands as it
/// is, anything else is read against base. "." and ".." are resolved by text, not by the disk, and
/// a trailing "/" is dropped. Empty text gives base.
[[nodiscard]] std::filesystem::path expandTypedPath(std::string_view typed, const std::filesystem::path& base);

/// Whether path names an existing folder, following links.
[[nodiscard]] bool isExistingFolder(const std::filesystem::path& path);

/// Whether path is itself a folder, not a link to one.
[[nodiscard]] bool isRealFolder(const std::filesystem::path& path);

/// Whether inner is outer or lies inside it, comparing whole components of the normalised
/// absolute paths ("/a/bc" is not inside "/a/b"). No disk access.
[[nodiscard]] bool isSameOrInside(const std::filesystem::path& inner, const std::filesystem::path& outer);

/// The path itself when it is an existing folder, else its nearest enclosing folder that exists;
/// "/" at worst.
[[nodiscard]] std::filesystem::path nearestExistingFolder(const std::filesystem::path& path);

/// The parent folder of an absolute path; "/" for "/".
[[nodiscard]] std::filesystem::path parentFolder(const std::filesystem::path& path);

struct VolumeCapacity {
    std::int64_t available = 0; ///< bytes an unprivileged user can still write
    std::int64_t total = 0;
};

/// The capacity of the volume holding path (statvfs), or nothing when it cannot be asked.
[[nodiscard]] std::optional<VolumeCapacity> volumeCapacity(const std::filesystem::path& path);

} // namespace orbisk::Paths
