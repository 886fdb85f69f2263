#include "files/NameFilter.h"

#include "support/UnicodeText.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <stdexcept>

namespace orbisk {
namespace {

bool isAscii(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

NameFilter::NameFilter(std::string text) : text_(std::move(text))
{
    if (WildcardPattern::containsWildcards(text_)) {
        pattern_.emplace(text_, false);
        return;
    }
    foldedNeedle_ = UnicodeText::foldedForSearch(UnicodeText::decode(text_));
    std::string ascii;
    for (int32_t i = 0; i < foldedNeedle_.length(); ++i) {
        const char16_t unit = foldedNeedle_.charAt(i);
        if (unit >= 0x80)
            return;
        ascii.push_back(static_cast<char>(unit));
    }
    asciiNeedle_ = std::move(ascii);
}

bool NameFilter::matches(std::string_view name) const
{
    if (text_.empty())
        return true;
    if (pattern_)
        return pattern_->matches(name);
    if (foldedNeedle_.isEmpty())
        return true; // the text was only marks that folding removes, like the empty needle
    if (isAscii(name))
        return containsAsciiNeedle(name);
    const auto folded = UnicodeText::foldedForSearch(UnicodeText::decode(name));
    return containsFoldedNeedle(std::u16string_view(folded.getBuffer(), static_cast<std::size_t>(folded.length())));
}

std::vector<std::uint32_t> NameFilter::passing(const std::vector<FileItem>& listing, const NameForms& forms) const
{
    if (forms.size() != listing.size())
        throw std::invalid_argument("name forms of another listing");
    std::vector<std::uint32_t> passed;
    passed.reserve(listing.size());
    const auto count = static_cast<std::uint32_t>(listing.size());
    const bool everything = text_.empty() || (!pattern_ && foldedNeedle_.isEmpty());
    const auto passes = [&](std::uint32_t i) {
        if (everything)
            return true;
        if (pattern_)
            return forms.isPrepared(i) ? pattern_->matches(forms.wildcardForm(i))
                                       : pattern_->matches(listing[i].name());
        return forms.isPrepared(i) ? containsFoldedNeedle(forms.searchForm(i)) : containsAsciiNeedle(listing[i].name());
    };
    for (std::uint32_t i = 0; i < count; ++i) {
        if (passes(i))
            passed.push_back(i);
    }
    return passed;
}

bool NameFilter::containsAsciiNeedle(std::string_view asciiName) const
{
    // Folding an ASCII name only lowercases it, so it can hold nothing but an ASCII needle.
    if (!asciiNeedle_)
        return false;
    thread_local std::string lowered;
    lowered.resize(asciiName.size());
    std::ranges::transform(asciiName, lowered.begin(), asciiLower);
    return lowered.find(*asciiNeedle_) != std::string::npos;
}

bool NameFilter::containsFoldedNeedle(std::u16string_view foldedName) const
{
    // ICU's search, not std::u16string_view::find: a match must not begin or end inside a
    // surrogate pair, or the lone surrogate that stands for a byte that is not UTF-8 in the
    // needle would be found inside a character beyond the first plane.
    return u_strFindFirst(foldedName.data(), static_cast<int32_t>(foldedName.size()), foldedNeedle_.getBuffer(),
                          foldedNeedle_.length()) != nullptr;
}

} // namespace orbisk
