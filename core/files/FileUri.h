// file:// URLs and text/uri-list, the way Linux desktop programs hand each other files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk::FileUri {

/// "file://" and the absolute path with every byte other than letters, digits and "-_.~/"
/// written as "%XX", so that a name that is not UTF-8 travels exactly.
[[nodiscard]] std::string fromPath(const std::filesystem::path& absolutePath);

/// The local path a file URL names, byte for byte, or nothing when the text is not one: another
/// scheme, a host other than empty or "localhost", a bad or NUL escape, or no absolute path.
/// The scheme and "localhost" are matched without regard to case, as URL readers do.
[[nodiscard]] std::optional<std::filesystem::path> toPath(std::string_view uri);

/// A text/uri-list body (RFC 2483): one URL per line, each line ended by CR LF.
[[nodiscard]] std::string listFromPaths(const std::vector<std::filesystem::path>& paths);

/// The local paths of a uri-list, in order. Lines may end in CR LF or LF alone; comment lines
/// ("#…"), blank lines and URLs that are not local files are left out.
[[nodiscard]] std::vector<std::filesystem::path> pathsFromList(std::string_view list);

} // namespace orbisk::FileUri
