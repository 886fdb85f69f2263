#include "places/RecentLocations.h"

#include <algorithm>

namespace orbisk {

void RecentLocations::visit(const std::filesystem::path& folder)
{
    std::erase_if(folders_, [&](const auto& known) { return known.native() == folder.native(); });
    folders_.push_front(folder);
    if (folders_.size() > capacity_)
        folders_.resize(capacity_);
}

} // namespace orbisk
