#include "files/NameForms.h"

#include "support/UnicodeText.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace orbisk {
namespace {

// What WildcardPattern and NameFilter take without ICU: ASCII, one character per byte (CR LF
// would join into one).
bool needsForms(std::string_view name)
{
    return std::ranges::any_of(name, [](char c) { return static_cast<unsigned char>(c) >= 0x80 || c == '\r'; });
}

std::uint32_t offset(std::size_t size)
{
    if (size > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("names too long to prepare");
    return static_cast<std::uint32_t>(size);
}

} // namespace

NameForms::NameForms(const std::vector<FileItem>& listing) : slots_(listing.size(), none)
{
    if (listing.size() >= none)
        throw std::length_error("too many names to prepare");
    std::u16string text;
    std::vector<std::uint32_t> bounds;
    for (std::size_t position = 0; position < listing.size(); ++position) {
        const auto& name = listing[position].name();
        if (!needsForms(name))
            continue;
        slots_[position] = offset(entries_.size());
        entries_.push_back({offset(search_.size()), offset(characters_.size()), offset(bounds_.size())});
        const auto folded = UnicodeText::foldedForSearch(UnicodeText::decode(name));
        search_.append(folded.getBuffer(), static_cast<std::size_t>(folded.length()));
        WildcardPattern::prepare(name, false, text, bounds);
        characters_ += text;
        bounds_.insert(bounds_.end(), bounds.begin(), bounds.end());
    }
    entries_.push_back({offset(search_.size()), offset(characters_.size()), offset(bounds_.size())});
    search_.shrink_to_fit();
    characters_.shrink_to_fit();
    bounds_.shrink_to_fit();
    entries_.shrink_to_fit();
}

std::u16string_view NameForms::searchForm(std::size_t position) const
{
    const auto slot = slots_.at(position);
    if (slot == none)
        throw std::invalid_argument("the name has no forms");
    const auto begin = entries_[slot].search;
    return std::u16string_view(search_).substr(begin, entries_[slot + 1].search - begin);
}

WildcardPattern::PreparedName NameForms::wildcardForm(std::size_t position) const
{
    const auto slot = slots_.at(position);
    if (slot == none)
        throw std::invalid_argument("the name has no forms");
    const auto& entry = entries_[slot];
    const auto& next = entries_[slot + 1];
    return {std::u16string_view(characters_).substr(entry.characters, next.characters - entry.characters),
            std::span<const std::uint32_t>(bounds_).subspan(entry.bounds, next.bounds - entry.bounds)};
}

std::size_t NameForms::memoryBytes() const
{
    return slots_.capacity() * sizeof(std::uint32_t) + entries_.capacity() * sizeof(Entry) +
           (search_.capacity() + characters_.capacity()) * sizeof(char16_t) +
           bounds_.capacity() * sizeof(std::uint32_t);
}

} // namespace orbisk
