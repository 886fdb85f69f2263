#include "panes/PaneListing.h"

#include "files/FileSorter.h"
#include "files/NameFilter.h"
#include "support/ByteCount.h"
#include "support/L10n.h"

namespace orbisk::PaneListing {

PaneRows rows(const std::filesystem::path& folder, const std::shared_ptr<const FolderListing>& listing,
              const Arrangement& arrangement, const Describe& describe)
{
    const NameFilter filter(arrangement.filter);
    const auto& items = listing->items;
    const auto passing = filter.passing(items, listing->forms);
    auto order = FileSorter::order(items, passing, arrangement.sort, arrangement.directoriesFirst,
                                   arrangement.folderSizes, describe, listing->ranks);
    std::optional<FileItem> parent;
    if (folder != "/")
        parent = FileItem::parentLink(folder);
    return PaneRows(std::shared_ptr<const PaneRows::Listing>(listing, &listing->items), std::move(order),
                    std::move(parent));
}

std::string statusText(const PaneRows& rows, const std::vector<bool>& selected, std::size_t unfilteredCount,
                       bool filterActive, const FolderSizes& folderSizes)
{
    long long listed = 0;
    long long selectedCount = 0;
    std::int64_t selectedBytes = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].isParentLink)
            continue;
        ++listed;
        if (i < selected.size() && selected[i]) {
            ++selectedCount;
            if (rows[i].isDirectory && !folderSizes.empty()) {
                const auto measured = folderSizes.find(std::string_view(rows[i].urlBytes()));
                selectedBytes += measured == folderSizes.end() ? 0 : measured->second;
            } else {
                selectedBytes += rows[i].size.value_or(0);
            }
        }
    }
    std::string text = selectedCount == 0 ? L(translate("Orbisk", "%lld items"), listed)
                                          : L(translate("Orbisk", "%lld of %lld selected, %@"), selectedCount, listed,
                                              formatByteCount(selectedBytes));
    if (filterActive)
        text += " " + L(translate("Orbisk", "(filtered from %lld)"), unfilteredCount);
    return text;
}

std::string freeSpaceText(const std::optional<Paths::VolumeCapacity>& capacity)
{
    if (!capacity)
        return {};
    return L(translate("Orbisk", "%@ available of %@"), formatByteCount(capacity->available),
             formatByteCount(capacity->total));
}

} // namespace orbisk::PaneListing
