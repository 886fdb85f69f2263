// Editing the ordered list of favourite folders.
#pragma once

#include <filesystem>
#include <vector>

namespace orbisk::Favorites {

using List = std::vector<std::filesystem::path>;

/// Whether folder is in the list (byte-exact).
[[nodiscard]] bool contains(const List& list, const std::filesystem::path& folder);
/// The list with folder appended at the end; unchanged when it is already there.
[[nodiscard]] List added(List list, const std::filesystem::path& folder);
/// The list without folder.
[[nodiscard]] List removed(List list, const std::filesystem::path& folder);
/// The list with the entry at from moved to index to (both clamped); unchanged when out of range.
[[nodiscard]] List moved(List list, std::size_t from, std::size_t to);

} // namespace orbisk::Favorites
