// The live name filter of a pane: a plain text found anywhere in a name, or a wildcard pattern.
#pragma once

#include "files/FileItem.h"
#include "files/NameForms.h"
#include "files/WildcardPattern.h"

#include <unicode/unistr.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// What the user typed into a pane's filter field. Without "*" or "?" the text is looked for
/// anywhere in the name, ignoring case and diacritics ("cafe" finds "Café.txt"), exactly as typed:
/// blanks are not trimmed. With a wildcard it is a case-insensitive WildcardPattern over the whole
/// name (";" separates alternatives, diacritics count). Immutable; matching may run on any thread.
class NameFilter {
public:
    /// The filter of text; an empty text lets every name through.
    explicit NameFilter(std::string text = {});

    /// Whether a name (raw bytes) passes the filter.
    [[nodiscard]] bool matches(std::string_view name) const;

    /// The positions of listing whose names pass, in listing order: what matches() says of each
    /// name, answered from forms (made from this listing) instead of Unicode work per name.
    /// Throws std::invalid_argument for forms of another length.
    [[nodiscard]] std::vector<std::uint32_t> passing(const std::vector<FileItem>& listing,
                                                     const NameForms& forms) const;

    /// The text exactly as typed.
    [[nodiscard]] const std::string& text() const { return text_; }
    /// The pattern, present only when the text holds "*" or "?".
    [[nodiscard]] const std::optional<WildcardPattern>& pattern() const { return pattern_; }
    /// Whether the filter lets everything through.
    [[nodiscard]] bool isEmpty() const { return text_.empty(); }

    bool operator==(const NameFilter& other) const { return text_ == other.text_; }

private:
    [[nodiscard]] bool containsAsciiNeedle(std::string_view asciiName) const;
    [[nodiscard]] bool containsFoldedNeedle(std::u16string_view foldedName) const;

    std::string text_;
    std::optional<WildcardPattern> pattern_;
    // The typed text folded once for the plain search; asciiNeedle_ holds it when it is plain ASCII
    // so that ASCII names can be searched without going through ICU.
    icu::UnicodeString foldedNeedle_;
    std::optional<std::string> asciiNeedle_;
};

} // namespace orbisk
