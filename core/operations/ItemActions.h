// Single, synchronous item actions: check a name, rename, new folder, new empty file, duplicate name.
#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "operations/FileOperationError.h"

namespace orbisk::ItemActions {

/// Fails with invalidName when name is empty or only spaces and tabs, is "." or "..", holds "/" or
/// a NUL byte, or is longer than 255 bytes. Any other bytes are allowed, valid UTF-8 or not.
[[nodiscard]] std::expected<void, FileOperationError> validateName(std::string_view name);

/// Fails with invalidName when the path of an item ends in "." or ".." ("a/.."): such a path names a
/// folder by where it stands from another, and no operation takes it as an item, as rm refuses it.
[[nodiscard]] std::expected<void, FileOperationError> validateItem(const std::filesystem::path& item);

/// Gives item the name newName in its own folder and returns the new path (the item's path read by
/// Paths::itemPath, so a ".." in it is the kernel's; an item ending in "." or ".." is refused as by
/// validateItem). Never replaces
/// anything: a taken name fails with itemExists, even when someone takes it while we rename. A
/// change of letter case only (the same object answers to both names on a case-folding volume)
/// goes through a hidden temporary name. Other failures are system(code, "rename", item); if the
/// item cannot leave the temporary name again, renameLeftAtTemporaryName says where it is.
[[nodiscard]] std::expected<std::filesystem::path, FileOperationError> rename(const std::filesystem::path& item,
                                                                              std::string_view newName);

/// Creates the folder folder/name (mode 0755, less the umask) and returns its path. Any failure,
/// a taken name included, is system(code, "create the folder", path).
[[nodiscard]] std::expected<std::filesystem::path, FileOperationError>
createDirectory(std::string_view name, const std::filesystem::path& folder);

/// Creates the empty file folder/name exclusively (mode 0644, less the umask) and returns its
/// path. A taken name fails with itemExists; other failures are system(code, "create the file", path).
[[nodiscard]] std::expected<std::filesystem::path, FileOperationError>
createEmptyFile(std::string_view name, const std::filesystem::path& folder);

/// The free "… copy" name for a duplicate of item beside it (folders, not links to them, keep
/// their whole name as stem).
[[nodiscard]] std::string duplicateName(const std::filesystem::path& item);

} // namespace orbisk::ItemActions
