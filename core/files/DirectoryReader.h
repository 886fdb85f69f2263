// Reads one folder into FileItems: one pass over the entries, one stat each (two for links).
#pragma once

#include <expected>
#include <filesystem>
#include <system_error>
#include <vector>

#include "files/FileItem.h"

namespace orbisk::DirectoryReader {

/// The immediate entries of folder in the order the file system returns them, without "." and
/// "..". Hidden entries (dot-names and names listed in the folder's .hidden file) are left out
/// unless includeHidden. An entry whose details cannot be read is still listed, with false flags
/// and no size or date. Fails only when the folder itself cannot be listed, with the errno of that
/// (ENOENT, EACCES, ENOTDIR, EIO...). Blocking; safe on any thread.
[[nodiscard]] std::expected<std::vector<FileItem>, std::error_code> read(const std::filesystem::path& folder,
                                                                         bool includeHidden);

/// One item for any path, for single refreshed entries. Never fails: what cannot be read gives
/// false flags and no size or date.
[[nodiscard]] FileItem makeItem(const std::filesystem::path& path);

} // namespace orbisk::DirectoryReader
