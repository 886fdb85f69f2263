#include "places/Favorites.h"

#include <algorithm>

namespace orbisk::Favorites {

bool contains(const List& list, const std::filesystem::path& folder)
{
    return std::ranges::any_of(list, [&](const auto& known) { return known.native() == folder.native(); });
}

List added(List list, const std::filesystem::path& folder)
{
    if (!contains(list, folder))
        list.push_back(folder);
    return list;
}

List removed(List list, const std::filesystem::path& folder)
{
    std::erase_if(list, [&](const auto& known) { return known.native() == folder.native(); });
    return list;
}

List moved(List list, std::size_t from, std::size_t to)
{
    if (from >= list.size())
        return list;
    to = std::min(to, list.size() - 1);
    auto entry = std::move(list[from]);
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(from));
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(to), std::move(entry));
    return list;
}

} // namespace orbisk::Favorites
