// L(…): fills the placeholders of a translated text with bidi-safe arguments.
#pragma once

#include <concepts>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "support/Translate.h"

namespace orbisk {

/// One argument of a localised text: a text for "%@" or an integer for "%lld".
using FormatArgument = std::variant<std::string, long long>;

namespace L10n {

/// Whether the interface reads right to left; the app decides it once at start.
void setRightToLeft(bool rightToLeft);
[[nodiscard]] bool isRightToLeft();

/// Fills text's specifiers in order (or by their "%n$" positions). Text arguments go through
/// DisplayText::isolatedArgument; "%%" becomes "%"; a specifier without an argument stays as it is.
[[nodiscard]] std::string format(std::string_view text, const std::vector<FormatArgument>& arguments);

inline FormatArgument argument(std::integral auto value)
{
    return static_cast<long long>(value);
}
inline FormatArgument argument(std::string_view value)
{
    return std::string(value);
}
inline FormatArgument argument(const char* value)
{
    return std::string(value);
}
inline FormatArgument argument(const std::string& value)
{
    return value;
}
inline FormatArgument argument(const std::filesystem::path& value)
{
    return value.native();
}

} // namespace L10n

/// L(translate("Orbisk", "“%@” is no longer available."), name): a translated text with its
/// placeholders filled. Names are passed as raw bytes; they are made visible and isolated here.
template <class... Arguments> [[nodiscard]] std::string L(std::string_view translated, const Arguments&... arguments)
{
    return L10n::format(translated, {L10n::argument(arguments)...});
}

} // namespace orbisk
