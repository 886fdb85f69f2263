#include "panes/PaneRows.h"

#include <algorithm>
#include <stdexcept>

namespace orbisk {

PaneRows::PaneRows(std::shared_ptr<const Listing> listing, std::vector<std::uint32_t> positions,
                   std::optional<FileItem> parentLink)
    : listing_(std::move(listing)), positions_(std::move(positions)), parent_(std::move(parentLink))
{
    const std::size_t count = listing_ ? listing_->size() : 0;
    if (std::ranges::any_of(positions_, [count](std::uint32_t p) { return p >= count; }))
        throw std::out_of_range("row position past the end of the listing");
}

} // namespace orbisk
