// "*" and "?" file-name patterns, several separated by ";", matched by user-perceived characters.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// A list of wildcard patterns built once from what the user typed and then tested against many
/// names. "*" stands for any run of characters, "?" for exactly one; there is no escape. A
/// character is a grapheme cluster, and characters are compared up to canonical equivalence, so a
/// precomposed "é" equals "e" followed by a combining acute. Names are raw bytes: bytes that are not
/// UTF-8 compare as themselves. Immutable after construction, so one pattern may be shared by threads.
class WildcardPattern {
public:
    /// Splits text at ";", trims spaces and tabs from each piece, drops empty pieces and, unless
    /// caseSensitive, lowercases the rest (full Unicode lowercasing). A text of only ";" and
    /// blanks gives an empty pattern, which matches nothing.
    WildcardPattern(std::string_view text, bool caseSensitive);

    /// Whether any of the patterns matches the whole name. The scan is greedy with one back-tracking
    /// point, and a "*" in the pattern facing a "*" in the name is taken as that literal character
    /// first: "*" does not match "*abc", while "*c" matches "x*abc".
    [[nodiscard]] bool matches(std::string_view name) const;

    /// A name cut into characters as the patterns compare them: its UTF-16 text (normalised, and
    /// lowercased when ignoring case) and where each character begins, followed by the end of the
    /// last one. Empty bounds mean that every code unit is a character of its own.
    struct PreparedName {
        std::u16string_view text;
        std::span<const std::uint32_t> bounds;
    };
    /// Cuts name as matches() does under caseSensitive, replacing what text and bounds held;
    /// bounds stay empty when every code unit is a character. Any thread.
    static void prepare(std::string_view name, bool caseSensitive, std::u16string& text,
                        std::vector<std::uint32_t>& bounds);
    /// matches() for a name that prepare() cut under this pattern's caseSensitive(), without the
    /// Unicode work: the same answer for the same name.
    [[nodiscard]] bool matches(PreparedName name) const;

    /// True when no pattern survived the splitting and trimming.
    [[nodiscard]] bool isEmpty() const { return patterns_.empty(); }
    [[nodiscard]] bool caseSensitive() const { return caseSensitive_; }
    /// The number of patterns, in the order typed.
    [[nodiscard]] std::size_t size() const { return patterns_.size(); }

    /// Whether text holds a "*" or a "?", that is, whether it reads as a pattern at all.
    [[nodiscard]] static bool containsWildcards(std::string_view text);

    bool operator==(const WildcardPattern&) const = default;

private:
    /// A pattern's text cut as prepare() cuts names, but with every bound written out.
    struct Characters {
        std::u16string text;
        std::vector<std::uint32_t> bounds;
        bool operator==(const Characters&) const = default;
    };
    /// One pattern: its characters and, for each, '*', '?' or ' ' for a literal.
    struct Pattern {
        Characters characters;
        std::string kinds;
        bool operator==(const Pattern&) const = default;
    };

    static bool matchesOne(const Pattern& pattern, PreparedName name);

    std::vector<Pattern> patterns_;
    bool caseSensitive_ = false;
};

} // namespace orbisk
