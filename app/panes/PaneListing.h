// What a pane lists and says about it: rows from a listing, status and free-space texts.
#pragma once

#include "files/FileItem.h"
#include "panes/PaneTab.h"
#include "support/Paths.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbisk::PaneListing {

using Describe = std::function<std::string(const FileItem&)>;

/// The rows a pane shows for tab: its items filtered by the tab's filter and sorted by its sort
/// (folders first when asked), with the ".." row on top except at "/".
[[nodiscard]] std::vector<FileItem> rows(const PaneTab& tab, bool directoriesFirst, const Describe& describe);

/// "%lld items", or "%lld of %lld selected, %@" with the selected bytes; " (filtered from %lld)"
/// follows when a filter hides some. Counts never include the ".." row.
[[nodiscard]] std::string statusText(const std::vector<FileItem>& rows, const std::vector<bool>& selected,
                                     std::size_t unfilteredCount, bool filterActive);

/// "%@ available of %@", or nothing when the capacity is unknown.
[[nodiscard]] std::string freeSpaceText(const std::optional<Paths::VolumeCapacity>& capacity);

} // namespace orbisk::PaneListing
