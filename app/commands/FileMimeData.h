// Files on the clipboard and in drags: text/uri-list plus the cut markers of Linux file managers.
#pragma once

#include <Qt>

#include <filesystem>
#include <optional>
#include <vector>

class QMimeData;

namespace orbisk {

/// Files offered by the clipboard or a drop; cut means the giver wants them moved.
struct FileOffer {
    std::vector<std::filesystem::path> paths;
    bool cut = false;
};

namespace FileMimeData {

/// New mime data for paths: "text/uri-list" with byte-exact file URLs, GNOME's
/// "x-special/gnome-copied-files" ("copy" or "cut", then the URLs), KDE's
/// "application/x-kde-cutselection" ("1" when cut), and the paths as plain text for text fields.
[[nodiscard]] QMimeData* make(const std::vector<std::filesystem::path>& paths, bool cut);

/// The local files that data offers, or nothing when it offers none. GNOME's list wins when both
/// lists are present, since only it says copy or cut for itself; otherwise KDE's marker decides.
[[nodiscard]] std::optional<FileOffer> read(const QMimeData* data);

/// What a drop of files into a folder should do, as Linux file managers decide it: Shift moves,
/// Ctrl copies, and without either a drop on the same volume moves and one elsewhere copies.
[[nodiscard]] Qt::DropAction dropAction(Qt::KeyboardModifiers modifiers, bool sameVolume);

} // namespace FileMimeData

} // namespace orbisk
