// Path helpers shared by the panes, the copy dialog and the tools: typed paths and containment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace orbisk::Paths {

/// The user's home folder: $HOME, else the password database, else "/".
[[nodiscard]] std::filesystem::path home();

/// A path as the user typed it into a field: "~" and "~/…" name the home folder, an absolute path
/// stands as it is, anything else is read against base; then read as folderPath reads it (so ".."
/// as the kernel reads it, and a trailing "/" dropped). Blanks are part of the names. Empty text
/// gives base.
[[nodiscard]] std::filesystem::path expandTypedPath(std::string_view typed, const std::filesystem::path& base);

/// An item's path as the kernel reads it, made absolute against the current folder: empty and "."
/// components and a trailing "/" are dropped, but the last component stays as given, even "." or
/// ".." (which operations refuse as items). The folders up to the last ".." before the item are
/// resolved by the kernel (realpath), since after a link ".." is the parent of the link's target,
/// not the folder that holds the link. The item itself is never resolved: it may be a link. When
/// they cannot be resolved (a folder does not exist), the ".." stays for the kernel to refuse.
[[nodiscard]] std::filesystem::path itemPath(const std::filesystem::path& path);

/// A folder's path as the kernel reads it: as itemPath, except that a last "." or ".." is part of the
/// folder, so it is resolved too.
[[nodiscard]] std::filesystem::path folderPath(const std::filesystem::path& path);

/// Whether the last component of path (a trailing "/" aside) is "." or "..": a folder named by its
/// relation to another, which no operation takes as an item.
[[nodiscard]] bool endsInDotOrDotDot(const std::filesystem::path& path);

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

/// The parent folder of an absolute path (its last component dropped, by text: a ".." is left to
/// the kernel); "/" for "/".
[[nodiscard]] std::filesystem::path parentFolder(const std::filesystem::path& path);

struct VolumeCapacity {
    std::int64_t available = 0; ///< bytes an unprivileged user can still write
    std::int64_t total = 0;
};

/// The capacity of the volume holding path (statvfs), or nothing when it cannot be asked.
[[nodiscard]] std::optional<VolumeCapacity> volumeCapacity(const std::filesystem::path& path);

} // namespace orbisk::Paths
