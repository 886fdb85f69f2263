// How a key written in Qt's portable text form is shown to Linux users.
#pragma once

#include <string>
#include <string_view>

namespace orbisk::KeyNotation {

/// The shown form of a portable key text: modifiers stay words joined by "+" ("Ctrl+Shift+N"),
/// arrows become "↑ ↓ ← →", "Return" becomes "Enter", "PgDown" "PgDn" and "Del" "Delete".
[[nodiscard]] std::string displayed(std::string_view portable);

/// Whether portable is written as Qt writes it back: known modifiers, each at most once, in the
/// order Ctrl, Alt, Shift, Meta, then exactly one key.
[[nodiscard]] bool isCanonical(std::string_view portable);

} // namespace orbisk::KeyNotation
