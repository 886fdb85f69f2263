// Member names of ZIP archives: how ours are written, how others' are read, which are safe.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk::ZipNames {

/// Whether bytes are well-formed UTF-8 (no overlongs, no surrogates, nothing past U+10FFFF).
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// The name a path is stored under: its NFC form when it is UTF-8 (so that a name typed with
/// decomposed accents reads the same everywhere), else its bytes as they are, so that a Linux
/// name that is not UTF-8 comes back unchanged.
[[nodiscard]] std::string storedName(std::string_view path);

/// A member name as this system names files. UTF-8 stays as it is. Other bytes are read as DOS
/// code page 437 when the archive was made on a system that stores names that way (neither the
/// UTF-8 flag nor a Unix host); a Unix host's or a flagged name keeps its bytes, since on Linux
/// the bytes are the name.
[[nodiscard]] std::string decodeName(std::string_view bytes, bool utf8Flag, bool madeByUnix);

/// The components a member name is created under inside the extraction folder, or nothing when the
/// name is unsafe: backslashes count as "/", empty and "." pieces are dropped; a leading "/", a
/// ".." piece, a NUL byte or nothing left make it unsafe.
[[nodiscard]] std::optional<std::vector<std::string>> safeComponents(std::string_view name);

/// Whether a link at depth `depth` (the number of folders between the extraction root and the
/// link) whose text is target stays inside the root when read by its text alone: not absolute,
/// and its ".." steps never climb above the root. Links through other links are checked on disk
/// after creation (see StagingTree::linkResolvesInside).
[[nodiscard]] bool linkStaysInside(std::size_t depth, std::string_view target);

} // namespace orbisk::ZipNames
