// What a folder that an operation created held when the operation left it, entry by entry.
#pragma once

#include <filesystem>
#include <vector>

#include "operations/ItemStamp.h"

namespace orbisk {

/// One entry below a created folder: its path relative to that folder, and its stamp.
struct FolderEntry {
    std::filesystem::path path;
    ItemStamp stamp;
    bool operator==(const FolderEntry&) const = default;
};

namespace FolderContents {

/// Every entry below folder (not the folder itself), each folder before what it holds; links are
/// not followed and folders of another volume are not entered. Entries that cannot be read are
/// left out, so that they later count as not made by the operation. Runs on the calling thread.
[[nodiscard]] std::vector<FolderEntry> of(const std::filesystem::path& folder);

} // namespace FolderContents

} // namespace orbisk
