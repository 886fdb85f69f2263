// Strict conversions between UTF-8 and UTF-16 bytes: invalid input is refused, never repaired.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orbisk::UnicodeCodec {

/// Whether bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing past U+10FFFF,
/// no sequence cut off at the end.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// The UTF-8 text of UTF-16 bytes in the given byte order; nothing for an odd byte count or an
/// unpaired surrogate.
[[nodiscard]] std::optional<std::string> utf16ToUtf8(std::string_view bytes, bool bigEndian);

/// The UTF-16 bytes of UTF-8 text; nothing when the text is not valid UTF-8.
[[nodiscard]] std::optional<std::string> utf8ToUtf16(std::string_view text, bool bigEndian);

} // namespace orbisk::UnicodeCodec
