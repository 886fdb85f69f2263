// The encodings the editor reads and writes: UTF-8 with or without a byte-order mark, and UTF-16
// with one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

enum class TextEncodingKind {
    utf8,
    utf8BOM,
    utf16LE,
    utf16BE,
};

/// Every kind, in declaration order, for menus and tests.
inline constexpr TextEncodingKind allTextEncodingKinds[] = {TextEncodingKind::utf8, TextEncodingKind::utf8BOM,
                                                            TextEncodingKind::utf16LE, TextEncodingKind::utf16BE};

/// The stored word of a kind ("utf8", "utf8BOM", "utf16LE", "utf16BE").
[[nodiscard]] std::string_view rawValue(TextEncodingKind kind);
/// The kind a stored word names; nothing for any other word.
[[nodiscard]] std::optional<TextEncodingKind> textEncodingKind(std::string_view raw);
/// The localised name shown in the editor ("UTF-8 with BOM").
[[nodiscard]] std::string displayName(TextEncodingKind kind);
/// The byte-order mark written first in this encoding; empty for plain UTF-8.
[[nodiscard]] std::string_view byteOrderMark(TextEncodingKind kind);

} // namespace orbisk
