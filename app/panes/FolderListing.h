// One reading of a folder with what is worked out from it once, shared by a tab and its rows.
#pragma once

#include "files/FileItem.h"
#include "files/NameForms.h"
#include "files/NameRanks.h"

#include <vector>

namespace orbisk {

/// The items of a folder as read, unfiltered and without "..", with what sorting and filtering them needs.
/// Immutable once made, so tabs and rows share one by pointer and a reload makes a new one: what
/// was derived from the names can never outlive them.
struct FolderListing {
    /// Takes items, ranks their names and prepares them for filters (the costly part: meant for
    /// the worker that read them).
    explicit FolderListing(std::vector<FileItem> read);

    const std::vector<FileItem> items;
    /// The names of items in collation order, so that a change of filter or sort never builds
    /// collation keys on the main thread.
    const NameRanks ranks;
    /// The names of items as filters compare them, so that a keystroke in the filter field does
    /// no Unicode work per name.
    const NameForms forms;
};

} // namespace orbisk
