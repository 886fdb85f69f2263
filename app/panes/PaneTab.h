// One tab of a pane: its folder, history, sort, filter and last listing.
#pragma once

#include "files/FileItem.h"
#include "files/FileSorter.h"
#include "files/SortSpec.h"
#include "panes/FolderListing.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orbisk {

enum class Side { left, right };

/// How a navigation changes the history: a new place, back, forward, or the same place again.
enum class HistoryMode { push, back, forward, reload };

/// A place left behind: the folder, the row that had the focus there and the scroll offset.
struct HistoryEntry {
    std::filesystem::path url;
    std::optional<std::string> selectedName;
    double scrollY = 0;
};

struct PaneTab {
    std::filesystem::path directory;
    std::vector<HistoryEntry> back;    ///< oldest first
    std::vector<HistoryEntry> forward; ///< most recently left last
    SortSpec sort;
    std::string filter;
    /// The last reading of the folder, made whole on the worker; empty until the first one.
    std::shared_ptr<const FolderListing> listing;
    FolderSizes folderSizes;
    std::set<std::string> selectedNames; ///< remembered when the tab was last left
    std::optional<std::string> focusedName;
    double scrollY = 0;
    bool hasLoaded = false;
    /// The mount point that held the folder when it was last listed, to tell an ejected volume
    /// from a deleted folder.
    std::filesystem::path mountPoint;
};

} // namespace orbisk
