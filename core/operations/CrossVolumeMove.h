// Moving an item to another volume, where a rename cannot go: copy under a hidden name, then remove.
#pragma once

#include <expected>
#include <filesystem>
#include <string>

namespace orbisk::CrossVolumeMove {

struct Failure {
    int code = 0;            ///< errno of the step that failed
    bool sourceLeft = false; ///< the item is complete at its new place, but (some of) the original stayed
};

/// Moves from (a file, link or whole folder; links are not followed) to the free name to on
/// another volume. The copy is made under a hidden ".orbisk-undo-<uuid>" name beside to and takes
/// the name to with an exclusive rename, so nothing is ever overwritten (EEXIST) and to is either
/// complete or absent; a failed copy is removed again. Only then is the original removed. Devices,
/// sockets and fifos fail with ENOTSUP. Runs on the calling thread.
[[nodiscard]] std::expected<void, Failure> move(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace orbisk::CrossVolumeMove
