// The order in which a pane lists a folder: by name, size, date or kind, folders first or mixed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "files/FileItem.h"
#include "files/NameRanks.h"
#include "files/SortSpec.h"

namespace orbisk {

/// Folder sizes measured so far, by folder URL. Searchable by the URL's bytes alone.
using FolderSizes = std::unordered_map<std::filesystem::path, std::int64_t, PathHash, PathEqual>;

/// The kind text of an item, as FileKind::describe gives it with a type look-up bound in.
using KindDescriber = std::function<std::string(const FileItem&)>;

namespace FileSorter {

/// items in the order of spec. With directoriesFirst, folders (not packages) come before everything
/// else in both directions. Names compare as NameCollator does (locale, numbers by value, case
/// ignored, exact text last); sizes are the item's size, else its entry in folderSizes, else -1;
/// a missing date is the oldest; kinds come from describe, asked once per distinct combination of
/// flags and lowercased extension, and compare as names do. Ties of size, date and kind are broken
/// by name in the same direction. Pure: no disk access; describe is called only for the kind
/// column. locale: an ICU locale name, empty for the process's.
[[nodiscard]] std::vector<FileItem> sorted(std::vector<FileItem> items, const SortSpec& spec, bool directoriesFirst,
                                           const FolderSizes& folderSizes, const KindDescriber& describe,
                                           std::string_view locale = {});

/// The order sorted() gives to the items of listing at positions (each position at most once),
/// as positions in listing, in the locale of ranks. ranks must be those of listing (made from it,
/// same length); they let the names be compared as integers, which makes sorting again after a
/// change of filter or column cheap. Throws std::invalid_argument for ranks of another length.
[[nodiscard]] std::vector<std::uint32_t> order(const std::vector<FileItem>& listing,
                                               const std::vector<std::uint32_t>& positions, const SortSpec& spec,
                                               bool directoriesFirst, const FolderSizes& folderSizes,
                                               const KindDescriber& describe, const NameRanks& ranks);

} // namespace FileSorter
} // namespace orbisk
