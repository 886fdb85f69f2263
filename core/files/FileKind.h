// The text of the Kind column: folder, link, the type's description, or a generic word.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "files/FileItem.h"

namespace orbisk {

/// Returns the localised, human-readable description of the type that a file-name extension
/// names ("plain text document" for "txt"), or nothing when the type is unknown or undescribed.
/// The app builds one on QMimeDatabase; the CLI on MimeTypeTable.
using TypeDescriptionLookup = std::function<std::optional<std::string>(std::string_view extension)>;

namespace FileKind {

/// The localised kind text of item: empty for the ".." row, "Folder" or "Folder (link)" for
/// folders, the type's description for an extension that lookup knows ("… (link)" through a link),
/// else "Package", "Link" or "Document". Calls lookup at most once.
[[nodiscard]] std::string describe(const FileItem& item, const TypeDescriptionLookup& lookup);

} // namespace FileKind
} // namespace orbisk
