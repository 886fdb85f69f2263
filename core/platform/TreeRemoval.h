// Removing a tree this program made, through descriptors, within a bounded number of them.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>

namespace orbisk::TreeRemoval {

/// Removes path and, when it is a real folder, everything in it; a link is removed, never
/// followed. A folder whose mode refuses the removal of its entries (a read-only folder copied
/// with its mode) is made writable through a descriptor opened without following links, so that a
/// folder swapped for a link meanwhile never has its target's mode changed. At most
/// foldersKeptOpen levels keep their descriptor while the levels below are removed; deeper ones
/// are reopened by name and checked to be the same folder. Only for trees this program made
/// itself (an incomplete copy): it deletes outright. The errno of the first removal that failed;
/// what could be removed is gone.
[[nodiscard]] std::expected<void, int> removeTree(const std::filesystem::path& path, std::size_t foldersKeptOpen = 64);

} // namespace orbisk::TreeRemoval
