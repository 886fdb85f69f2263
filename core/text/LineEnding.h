// The line-ending styles a text file can have.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

enum class LineEnding {
    lf,
    crlf,
    cr,
};

inline constexpr LineEnding allLineEndings[] = {LineEnding::lf, LineEnding::crlf, LineEnding::cr};

/// The stored word of a style ("lf", "crlf", "cr").
[[nodiscard]] std::string_view rawValue(LineEnding ending);
/// The style a stored word names; nothing for any other word.
[[nodiscard]] std::optional<LineEnding> lineEnding(std::string_view raw);
/// The localised name shown in the editor ("CRLF (Windows)").
[[nodiscard]] std::string displayName(LineEnding ending);
/// The bytes that end a line in this style.
[[nodiscard]] std::string_view lineBreak(LineEnding ending);

} // namespace orbisk
