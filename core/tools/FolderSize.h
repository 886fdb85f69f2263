// Measuring a folder tree: bytes, files, folders and unreadable items, each item looked at once.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <unordered_set>

#include "operations/CancellationToken.h"

namespace orbisk::FolderSize {

/// What one measurement found. All counters start at 0.
struct Result {
    std::int64_t bytes = 0;      ///< logical sizes (st_size) of the counted regular files
    std::int64_t files = 0;      ///< counted regular files, each hard-linked file once
    std::int64_t folders = 0;    ///< counted folders, each folder once however often reached
    std::int64_t unreadable = 0; ///< items that could not be examined or folders not listed
    std::int64_t cloudOnly = 0;  ///< files whose contents live elsewhere: Linux has none, always 0

    Result& operator+=(const Result& other);
    bool operator==(const Result&) const = default;
};

/// Inode numbers already counted in one measurement (all on its one device).
using InodeSet = std::unordered_set<std::uint64_t>;

/// Receives the running result, from the measuring thread, every 512 items.
using Progress = std::function<void(const Result&)>;

/// How often (in items) the token is read and progress published.
inline constexpr std::int64_t checkInterval = 512;

/// Measures everything inside folder (the folder itself is not among the folders counted), bound
/// to folder's volume: a volume mounted inside is left out, links are not followed, a hard-linked
/// file and a folder reached twice (a bind mount) count once. An unreadable folder counts 1 in
/// unreadable. Returns what it had when cancelled; the caller marks that incomplete. Blocking;
/// any thread.
[[nodiscard]] Result compute(const std::filesystem::path& folder, const CancellationToken& cancellation,
                             const Progress& progress = {});

/// Adds the item at path (a folder with all it holds, or a single file) into into, counting only
/// what lies on device and is not yet in the two sets, which the calls of one measurement share.
/// A folder on another device adds nothing. False when cancelled (into then holds what was
/// counted so far). Blocking; any thread.
[[nodiscard]] bool accumulate(const std::filesystem::path& path, dev_t device, InodeSet& seenHardLinks,
                              InodeSet& seenFolders, Result& into, const CancellationToken& cancellation,
                              const Progress& progress = {});

} // namespace orbisk::FolderSize
