// The pieces of a trash entry: its .trashinfo text and the name it gets inside the trash.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace orbisk::TrashInfo {

/// The longest file name most Linux file systems take (NAME_MAX).
inline constexpr std::size_t maximumNameLength = 255;
inline constexpr std::string_view infoSuffix = ".trashinfo";

/// The contents of a .trashinfo file: the "[Trash Info]" group with Path (already the right
/// absolute or volume-relative path, unescaped) and the local DeletionDate, YYYY-MM-DDThh:mm:ss.
[[nodiscard]] std::string contents(std::string_view path, std::time_t deletedAt);

/// The attempt'th name to try for name inside a trash: name itself first, then "stem 2.ext",
/// "stem 3.ext", … Every candidate leaves room for ".trashinfo" within maximumNameLength; a
/// shortened name is cut before its extension and never inside a UTF-8 character.
[[nodiscard]] std::string candidateName(std::string_view name, int attempt);

} // namespace orbisk::TrashInfo
