#include "panes/PaneListing.h"

#include "files/FileSorter.h"
#include "files/NameFilter.h"
#include "support/ByteCount.h"
#include "support/L10n.h"

namespace orbisk::PaneListing {

std::vector<FileItem> rows(const std::filesystem::path& folder, const std::vector<FileItem>& items,
                           const Arrangement& arrangement, const Describe& describe, const NameRanks* ranks)
{
    const NameFilter filter(arrangement.filter);
    std::vector<FileItem> shown;
    if (ranks && ranks->size() == items.size()) {
        // Sort positions, then copy each shown item once, straight to its place after "..".
        std::vector<std::uint32_t> passing;
        passing.reserve(items.size());
        for (std::uint32_t i = 0; i < items.size(); ++i) {
            if (filter.matches(items[i].name()))
                passing.push_back(i);
        }
        const auto order = FileSorter::order(items, passing, arrangement.sort, arrangement.directoriesFirst,
                                             arrangement.folderSizes, describe, *ranks);
        shown.reserve(order.size() + 1);
        if (folder != "/")
            shown.push_back(FileItem::parentLink(folder));
        for (const auto i : order)
            shown.push_back(items[i]);
        return shown;
    }
    shown.reserve(items.size() + 1);
    for (const auto& item : items) {
        if (filter.matches(item.name()))
            shown.push_back(item);
    }
    shown = FileSorter::sorted(std::move(shown), arrangement.sort, arrangement.directoriesFirst,
                               arrangement.folderSizes, describe);
    if (folder != "/")
        shown.insert(shown.begin(), FileItem::parentLink(folder));
    return shown;
}

std::string statusText(const std::vector<FileItem>& rows, const std::vector<bool>& selected,
                       std::size_t unfilteredCount, bool filterActive)
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
            selectedBytes += rows[i].size.value_or(0);
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
