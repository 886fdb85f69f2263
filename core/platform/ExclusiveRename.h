// The one exclusive rename of the program: moves an entry to a new name, never replacing anything.
#pragma once

#include <expected>
#include <filesystem>

namespace orbisk::ExclusiveRename {

/// How the rename is carried out. `automatic` is what callers want; the other two force the
/// fallbacks that file systems refusing RENAME_NOREPLACE get, so that tests reach them.
enum class Method {
    automatic,       ///< renameat2(RENAME_NOREPLACE), falling back where the flag is refused
    withoutFlag,     ///< the fallback: link + unlink for non-folders, a placeholder for folders
    placeholderOnly, ///< the fallback for non-folders that cannot be hard-linked, used for all
};

/// Renames fromName (relative to fromDir, or absolute) to toName (relative to toDir, or absolute)
/// only when toName is free; fails with EEXIST when something is there, even a dangling link.
/// Never checks and then renames: the kernel or an exclusive creation decides. On failure the
/// source is where it was and no placeholder is left behind. Links are renamed, never followed.
/// Returns the errno of the failure (EXDEV across volumes; the caller decides what to do).
[[nodiscard]] std::expected<void, int> renameAt(int fromDir, const std::filesystem::path& fromName, int toDir,
                                                const std::filesystem::path& toName, Method method = Method::automatic);

/// The same with paths (relative ones are read against the current folder).
[[nodiscard]] std::expected<void, int> rename(const std::filesystem::path& from, const std::filesystem::path& to,
                                              Method method = Method::automatic);

} // namespace orbisk::ExclusiveRename
