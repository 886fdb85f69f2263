// Finding the printf-style placeholders (%@, %lld, %1$@, %%) in a localised text.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace orbisk {

struct FormatSpecifier {
    std::size_t offset = 0;
    std::size_t length = 0;
    std::optional<int> position; ///< 1-based, from the "%n$" form
    char conversion = 0;         ///< '@', 'd', 'u', 'x', ..., or '%'
};

/// Every specifier matching %(\d+\$)?[-+ #0]*\d*(\.\d+)?(ll|l|h|q|z|t|j)?[@dDiuUxXoOfeEgGcCsSpaA%],
/// left to right. A lone "%" that starts no specifier is not listed.
[[nodiscard]] std::vector<FormatSpecifier> findFormatSpecifiers(std::string_view text);

} // namespace orbisk
