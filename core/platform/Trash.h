// Moving items to the user's Trash the way every Linux desktop reads it back.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>

#include <sys/types.h>

#include "platform/MountTable.h"

namespace orbisk {

/// The freedesktop.org Trash standard (version 1.0): items on the home file system go to the
/// home trash, items on other volumes to that volume's own trash, each with a .trashinfo file that
/// says where the item came from. An item is only ever renamed into a trash on its own volume, never
/// copied. Safe to use from any thread; each call reads what it needs afresh.
class Trash {
public:
    /// homeTrash is the home trash folder ($XDG_DATA_HOME/Trash); uid names the volume trash folders.
    /// Without mounts, the live mount table is read on every call.
    Trash(std::filesystem::path homeTrash, uid_t uid, std::optional<MountTable> mounts = std::nullopt);

    /// The current user's Trash: homeTrashFolder(), getuid(), the live mount table.
    [[nodiscard]] static Trash forCurrentUser();

    /// $XDG_DATA_HOME/Trash when that variable holds an absolute path, else ~/.local/share/Trash.
    [[nodiscard]] static std::filesystem::path homeTrashFolder();

    /// Moves item (a link is moved, not followed) into the trash of its volume and returns where it
    /// is now. The trash folders are made when missing. On failure, an errno: ENOENT when the item is
    /// gone, EXDEV when the chosen trash is not on the item's volume after all (nothing is copied);
    /// the item is then where it was and no .trashinfo file is left behind. EBUSY, before anything
    /// is made, when the item is the mount point of a volume or holds one: renaming a mount point
    /// fails anyway, and a volume inside the Trash would be erased with it.
    [[nodiscard]] std::expected<std::filesystem::path, int> moveToTrash(const std::filesystem::path& item) const;

    /// Moves an item back out of a trash to original, never replacing anything there (EEXIST), and
    /// removes its .trashinfo file.
    [[nodiscard]] static std::expected<void, int> putBack(const std::filesystem::path& inTrash,
                                                          const std::filesystem::path& original);

    /// The .trashinfo file that belongs to an item in a trash's "files" folder.
    [[nodiscard]] static std::filesystem::path infoFileFor(const std::filesystem::path& inTrash);

    [[nodiscard]] const std::filesystem::path& homeTrash() const { return homeTrash_; }

private:
    std::filesystem::path homeTrash_;
    uid_t uid_;
    std::optional<MountTable> mounts_;
};

} // namespace orbisk
