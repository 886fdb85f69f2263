#include "files/NameFilter.h"

#include "support/UnicodeText.h"

#include <algorithm>

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
    if (isAscii(name)) {
        // Folding an ASCII name only lowercases it, so it can hold nothing but an ASCII needle.
        if (!asciiNeedle_)
            return false;
        thread_local std::string lowered;
        lowered.resize(name.size());
        std::ranges::transform(name, lowered.begin(), asciiLower);
        return lowered.find(*asciiNeedle_) != std::string::npos;
    }
    return UnicodeText::foldedForSearch(UnicodeText::decode(name)).indexOf(foldedNeedle_) >= 0;
}

} // namespace orbisk
