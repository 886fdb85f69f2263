// What a pane lists and says about it: rows from a listing, status and free-space texts.
#pragma once

#include "files/FileItem.h"
#include "panes/FolderListing.h"
#include "panes/PaneRows.h"
#include "panes/PaneTab.h"
#include "support/Paths.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbisk::PaneListing {

/// The kind text of an item; must be callable from a worker thread.
using Describe = std::function<std::string(const FileItem&)>;

/// What decides the rows besides the items themselves.
struct Arrangement {
    std::string filter;
    SortSpec sort;
    bool directoriesFirst = true;
    FolderSizes folderSizes;
};

/// The rows a pane shows for the listing of folder: filtered, sorted (folders first when asked),
/// with the ".." row on top except at "/". The rows keep the listing alive and copy none of its
/// items. Pure; any thread, given a describe that is.
[[nodiscard]] PaneRows rows(const std::filesystem::path& folder, const std::shared_ptr<const FolderListing>& listing,
                            const Arrangement& arrangement, const Describe& describe);

/// "%lld items", or "%lld of %lld selected, %@" with the selected bytes; " (filtered from %lld)"
/// follows when a filter hides some. Counts never include the ".." row.
/// Selected folders count with their measured size from folderSizes, when they have one.
[[nodiscard]] std::string statusText(const PaneRows& rows, const std::vector<bool>& selected,
                                     std::size_t unfilteredCount, bool filterActive,
                                     const FolderSizes& folderSizes = {});

/// "%@ available of %@", or nothing when the capacity is unknown.
[[nodiscard]] std::string freeSpaceText(const std::optional<Paths::VolumeCapacity>& capacity);

} // namespace orbisk::PaneListing
