#include "files/WildcardPattern.h"

#include "support/UnicodeText.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <memory>

namespace orbisk {
namespace {

constexpr char16_t finalSigma = u'\u03C2';
constexpr char16_t sigma = u'\u03C3';

// ICU break iterators are costly to create and not thread-safe, so each thread keeps its own.
icu::BreakIterator* characterIterator()
{
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> created(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(created) : nullptr;
    }();
    return iterator.get();
}

// Plain ASCII is one character per byte, except that CR LF forms a single cluster.
bool isSimpleAscii(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\r'; });
}

// Whether text breaks between every two code points: true when each one is an ordinary character
// or a control other than CR, as then no rule of UAX #29 joins it to a neighbour. Most names
// outside ASCII are like this, and for them the break iterator can be skipped.
bool isOneCharacterPerCodePoint(const icu::UnicodeString& text)
{
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        const auto kind = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
        if ((kind != U_GCB_OTHER && kind != U_GCB_CONTROL) || c == u'\r' ||
            u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC))
            return false;
        i += U16_LENGTH(c);
    }
    return true;
}

std::u16string_view characterAt(const std::u16string& text, const std::vector<std::uint32_t>& bounds, std::size_t i)
{
    return std::u16string_view(text).substr(bounds[i], bounds[i + 1] - bounds[i]);
}

} // namespace

WildcardPattern::WildcardPattern(std::string_view text, bool caseSensitive) : caseSensitive_(caseSensitive)
{
    while (!text.empty()) {
        const auto end = text.find(';');
        auto piece = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        const auto first = piece.find_first_not_of(" \t");
        if (first == std::string_view::npos)
            continue;
        piece = piece.substr(first, piece.find_last_not_of(" \t") - first + 1);
        Pattern pattern;
        auto& [units, bounds] = pattern.characters;
        prepare(piece, caseSensitive, units, bounds);
        if (bounds.empty()) {
            for (std::uint32_t i = 0; i <= units.size(); ++i)
                bounds.push_back(i);
        }
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
            const auto character = characterAt(units, bounds, i);
            pattern.kinds.push_back(character == u"*" ? '*' : character == u"?" ? '?' : ' ');
        }
        patterns_.push_back(std::move(pattern));
    }
}

bool WildcardPattern::containsWildcards(std::string_view text)
{
    return text.find_first_of("*?") != std::string_view::npos;
}

bool WildcardPattern::matches(std::string_view name) const
{
    if (patterns_.empty())
        return false;
    // A pane tests every name of a folder on each keystroke: reuse one buffer per thread.
    thread_local std::u16string text;
    thread_local std::vector<std::uint32_t> bounds;
    prepare(name, caseSensitive_, text, bounds);
    return matches(PreparedName{text, bounds});
}

bool WildcardPattern::matches(PreparedName name) const
{
    return std::ranges::any_of(patterns_, [&](const Pattern& pattern) { return matchesOne(pattern, name); });
}

void WildcardPattern::prepare(std::string_view bytes, bool caseSensitive, std::u16string& out,
                              std::vector<std::uint32_t>& bounds)
{
    out.clear();
    bounds.clear();
    if (isSimpleAscii(bytes)) {
        for (const char c : bytes) {
            const auto unit = static_cast<char16_t>(c);
            out.push_back(!caseSensitive && unit >= u'A' && unit <= u'Z' ? unit + (u'a' - u'A') : unit);
        }
        return;
    }

    auto text = UnicodeText::decode(bytes);
    if (!caseSensitive) {
        text = UnicodeText::lowercased(text);
        // Lowercasing picks the final form of sigma by context, which differs between a pattern
        // ("*Σ" gives "*σ") and a name ("ΟΔΟΣ" gives "οδος"); both forms are one letter.
        text.findAndReplace(icu::UnicodeString(finalSigma), icu::UnicodeString(sigma));
    }
    // Composing first makes canonically equivalent spellings identical, code unit for code unit.
    text = UnicodeText::composed(text);
    out.assign(text.getBuffer(), static_cast<std::size_t>(text.length()));

    auto* iterator = characterIterator();
    if (iterator == nullptr || isOneCharacterPerCodePoint(text)) {
        // A lone surrogate (a byte that is not UTF-8) is one code point of one unit too.
        if (text.countChar32() == text.length())
            return;
        bounds.push_back(0);
        for (int32_t i = 0; i < text.length();) {
            i = text.moveIndex32(i, 1);
            bounds.push_back(static_cast<std::uint32_t>(i));
        }
        return;
    }
    bounds.push_back(0);
    iterator->setText(text);
    iterator->first();
    for (int32_t end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next())
        bounds.push_back(static_cast<std::uint32_t>(end));
    // The iterator keeps a pointer to text; point it at something that outlives this call.
    static const icu::UnicodeString nothing;
    iterator->setText(nothing);
}

bool WildcardPattern::matchesOne(const Pattern& pattern, PreparedName name)
{
    constexpr auto none = static_cast<std::size_t>(-1);
    const std::string& kinds = pattern.kinds;
    const std::size_t patternLength = kinds.size();
    const bool unitPerCharacter = name.bounds.empty();
    const std::size_t nameLength = unitPerCharacter ? name.text.size() : name.bounds.size() - 1;
    const auto same = [&](std::size_t p, std::size_t n) {
        const auto wanted = characterAt(pattern.characters.text, pattern.characters.bounds, p);
        if (unitPerCharacter)
            return wanted.size() == 1 && wanted[0] == name.text[n];
        return wanted == name.text.substr(name.bounds[n], name.bounds[n + 1] - name.bounds[n]);
    };

    std::size_t p = 0, n = 0, star = none, mark = 0;
    while (n < nameLength) {
        // The literal test comes before the star test: a "*" facing a "*" is consumed as a literal.
        if (p < patternLength && (kinds[p] == '?' || same(p, n))) {
            ++p;
            ++n;
        } else if (p < patternLength && kinds[p] == '*') {
            star = p;
            mark = n;
            ++p;
        } else if (star != none) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < patternLength && kinds[p] == '*')
        ++p;
    return p == patternLength;
}

} // namespace orbisk
