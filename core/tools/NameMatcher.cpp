#include "tools/NameMatcher.h"

#include <algorithm>

#include "support/UnicodeText.h"

namespace orbisk {
namespace {

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

} // namespace

NameMatcher::NameMatcher(std::string_view pattern)
{
    if (pattern.empty())
        return;
    if (WildcardPattern::containsWildcards(pattern)) {
        kind_ = Kind::wildcard;
        wildcard_.emplace(pattern, false);
        return;
    }
    kind_ = Kind::contains;
    folded_ = UnicodeText::foldedForSearch(UnicodeText::decode(pattern));
    std::string utf8;
    folded_.toUTF8String(utf8);
    if (isAscii(utf8))
        ascii_ = std::move(utf8);
}

bool NameMatcher::matches(std::string_view name)
{
    switch (kind_) {
    case Kind::everything: return true;
    case Kind::wildcard:
        WildcardPattern::prepare(name, false, prepared_, bounds_);
        return wildcard_->matches(WildcardPattern::PreparedName{prepared_, bounds_});
    case Kind::contains: return contains(name);
    }
    return false;
}

bool NameMatcher::contains(std::string_view name)
{
    if (isAscii(name)) {
        // Folding plain ASCII is lowercasing it, and an ASCII name cannot hold a needle that folds
        // to anything but ASCII, so the Unicode work is needed only for other names.
        if (!ascii_)
            return false;
        lowered_.assign(name);
        std::ranges::transform(lowered_, lowered_.begin(), asciiLower);
        return lowered_.find(*ascii_) != std::string::npos;
    }
    return UnicodeText::foldedForSearch(UnicodeText::decode(name)).indexOf(folded_) >= 0;
}

} // namespace orbisk
