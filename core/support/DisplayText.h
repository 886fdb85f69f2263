// How names and paths, which are bytes, are shown safely inside messages and labels.
#pragma once

#include <string>
#include <string_view>

namespace orbisk::DisplayText {

/// U+2066 LEFT-TO-RIGHT ISOLATE, U+2068 FIRST STRONG ISOLATE, U+2069 POP DIRECTIONAL ISOLATE.
inline constexpr std::string_view leftToRightIsolate = "\u2066";
inline constexpr std::string_view firstStrongIsolate = "\u2068";
inline constexpr std::string_view popIsolate = "\u2069";

/// Valid UTF-8 that shows every character of raw: bytes that are not UTF-8 become "\xE9",
/// control, invisible and direction-changing characters become "\u{202E}" (a newline "\n").
[[nodiscard]] std::string visible(std::string_view raw);

/// Whether text holds a character that can reorder a line: right-to-left letters, Arabic digits,
/// or a bidirectional control.
[[nodiscard]] bool canReorder(std::string_view raw);

/// A path, each component made visible, wrapped in a left-to-right isolate.
[[nodiscard]] std::string isolatedPath(std::string_view path);

/// An argument for a message: as it stands when the interface is left-to-right and nothing in it
/// can reorder the line; a path ("/…" or "~/…" without a line break) as isolatedPath; anything
/// else with its bidirectional controls made visible, in a first-strong isolate.
[[nodiscard]] std::string isolatedArgument(std::string_view raw, bool rightToLeftInterface);

/// A path shown on its own (a pane header, a tooltip): its visible form when no isolation is
/// needed, otherwise isolatedPath.
[[nodiscard]] std::string displayPath(std::string_view path, bool rightToLeftInterface);

/// A file name shown in a list: visible, never isolated (the list cell isolates itself).
[[nodiscard]] inline std::string displayName(std::string_view name)
{
    return visible(name);
}

} // namespace orbisk::DisplayText
