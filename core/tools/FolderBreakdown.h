// What a folder is made of: each direct child measured on its own, for the breakdown view.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "operations/CancellationToken.h"
#include "tools/FolderSize.h"

namespace orbisk::FolderBreakdown {

/// One direct child of the measured folder. Flags describe the child itself (links not followed).
struct Entry {
    std::filesystem::path url;
    std::string name; ///< byte-exact
    bool isDirectory = false;
    bool isPackage = false; ///< always false on Linux
    bool isHidden = false;
    bool isSymbolicLink = false;
    bool isOtherVolume = false; ///< a folder on which another volume is mounted: not measured
    FolderSize::Result size;    ///< a folder's contents and the folder itself; a file: its size, files = 1
    bool isComplete = false;    ///< false while being measured, or when measuring was stopped

    bool operator==(const Entry&) const = default;
};

/// The growing report: entries in byte order of their names (the view sorts them).
struct Report {
    std::filesystem::path folder;
    std::vector<Entry> entries;
    bool isComplete = false;
    std::error_code readError; ///< set when the folder itself could not be listed

    [[nodiscard]] std::int64_t totalBytes() const;
    [[nodiscard]] std::int64_t totalFiles() const;
    [[nodiscard]] std::int64_t totalFolders() const;
    [[nodiscard]] std::int64_t unreadable() const;
    [[nodiscard]] std::int64_t cloudOnly() const;
    /// entry's bytes over totalBytes(); 0 when the total is 0.
    [[nodiscard]] double share(const Entry& entry) const;
    /// How many folder children are measured so far, and how many there are to measure.
    [[nodiscard]] std::int64_t measuredFolders() const;
    [[nodiscard]] std::int64_t foldersToMeasure() const;

    bool operator==(const Report&) const = default;
};

/// Receives the report as it grows, from the measuring thread: once when the children are listed,
/// as measurements progress (every 512 items) and when each folder child is done.
using Update = std::function<void(const Report&)>;

/// Lists folder's children, hidden ones too, and measures each folder child with
/// FolderSize::accumulate, all sharing one pair of inode sets so that a file hard-linked under
/// two children counts once in the totals; a child with another volume mounted on it is marked
/// and not measured; a link is neither followed nor measured. Returns the final report (complete
/// unless cancelled). Blocking; any thread.
[[nodiscard]] Report compute(const std::filesystem::path& folder, const CancellationToken& cancellation,
                             const Update& update = {});

} // namespace orbisk::FolderBreakdown
