// Unicode views of byte strings for matching and sorting: lossless decoding, folding, graphemes.
#pragma once

#include <unicode/unistr.h>

#include <string>
#include <string_view>
#include <vector>

namespace orbisk::UnicodeText {

/// Decodes UTF-8; every byte that is not part of valid UTF-8 becomes the lone surrogate
/// U+DC00 + byte, so that invalid names still compare as themselves and never as each other.
[[nodiscard]] icu::UnicodeString decode(std::string_view bytes);

/// Appends the UTF-8 bytes of one code point (lone surrogates too, as three bytes); a value
/// outside Unicode's range adds nothing.
void appendUtf8(std::string& out, UChar32 c);

/// The longest start of bytes that is at most maxBytes long and ends between characters: a valid
/// UTF-8 sequence is kept or dropped whole, any other byte counts as a character of its own. For
/// names that must be shortened to fit a length limit without breaking a character.
[[nodiscard]] std::string_view prefixOfWholeCharacters(std::string_view bytes, std::size_t maxBytes);

/// Canonical composition (NFC).
[[nodiscard]] icu::UnicodeString composed(const icu::UnicodeString& text);

/// Full Unicode lowercasing (locale-independent).
[[nodiscard]] icu::UnicodeString lowercased(const icu::UnicodeString& text);

/// The form used for "ignoring case and diacritics": full case folding with all combining marks
/// removed (Latin accents, Hebrew points), in NFC.
[[nodiscard]] icu::UnicodeString foldedForSearch(const icu::UnicodeString& text);

/// Substring search ignoring case and diacritics, without locale rules. An empty needle is found.
[[nodiscard]] bool containsIgnoringCaseAndDiacritics(std::string_view haystack, std::string_view needle);

/// The user-perceived characters (extended grapheme clusters) of text, each in NFC.
[[nodiscard]] std::vector<icu::UnicodeString> graphemes(const icu::UnicodeString& text);

} // namespace orbisk::UnicodeText
