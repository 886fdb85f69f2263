// Bytes escaped as in URLs, for file:// addresses and the Trash's info files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// Path bytes escaped as in URLs (RFC 3986 unreserved characters and "/" stay, every other byte
/// becomes "%XX"). Names that are not UTF-8 survive, since bytes are escaped one by one.
[[nodiscard]] std::string percentEncoded(std::string_view bytes);

/// The bytes behind a percent-encoded text, or nothing when an escape is malformed or names the
/// byte 0, which no path can hold.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

} // namespace orbisk
