// The forms of a listing's names that filters compare, worked out once per listing.
#pragma once

#include "files/FileItem.h"
#include "files/WildcardPattern.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// For each name of a listing that is not plain ASCII, what NameFilter would otherwise work out
/// with ICU on every keystroke: the text folded for searching (case and diacritics removed, NFC)
/// and the characters a case-insensitive wildcard pattern compares (lowercased, NFC, grapheme
/// bounds). Plain ASCII names (without CR) need neither and cost four bytes. Building costs one
/// pass of that Unicode work over the listing; meant for the worker that read the folder.
/// Immutable once built; may be shared between threads.
class NameForms {
public:
    /// The forms of the names of listing, by position.
    explicit NameForms(const std::vector<FileItem>& listing);

    /// How many names the forms were made for: the length of the listing.
    [[nodiscard]] std::size_t size() const { return slots_.size(); }

    /// Whether the name at position has forms; false for plain ASCII names, which filters match
    /// directly.
    [[nodiscard]] bool isPrepared(std::size_t position) const { return slots_[position] != none; }

    /// The name at position folded for searching, as UnicodeText::foldedForSearch gives it.
    /// Only for a prepared position.
    [[nodiscard]] std::u16string_view searchForm(std::size_t position) const;

    /// The name at position as WildcardPattern::prepare cuts it ignoring case. Only for a prepared
    /// position.
    [[nodiscard]] WildcardPattern::PreparedName wildcardForm(std::size_t position) const;

    /// The bytes the forms hold, for measuring what they cost.
    [[nodiscard]] std::size_t memoryBytes() const;

private:
    static constexpr std::uint32_t none = UINT32_MAX;
    /// Where the forms of one name begin in the shared buffers; the next entry's starts are its ends.
    struct Entry {
        std::uint32_t search = 0;
        std::uint32_t characters = 0;
        std::uint32_t bounds = 0;
    };

    std::vector<std::uint32_t> slots_; ///< by position: an index into entries_, or none
    std::vector<Entry> entries_;       ///< one per prepared name, then one that only ends the last
    std::u16string search_;
    std::u16string characters_;
    std::vector<std::uint32_t> bounds_;
};

} // namespace orbisk
