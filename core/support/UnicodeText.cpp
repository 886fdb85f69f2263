#include "support/UnicodeText.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <memory>

namespace orbisk::UnicodeText {
namespace {

const icu::Normalizer2& nfc()
{
    UErrorCode status = U_ZERO_ERROR;
    const auto* n = icu::Normalizer2::getNFCInstance(status);
    return *n;
}

const icu::Normalizer2& nfd()
{
    UErrorCode status = U_ZERO_ERROR;
    const auto* n = icu::Normalizer2::getNFDInstance(status);
    return *n;
}

} // namespace

icu::UnicodeString decode(std::string_view bytes)
{
    icu::UnicodeString out;
    const auto* s = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto length = static_cast<int32_t>(bytes.size());
    int32_t i = 0;
    while (i < length) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0) {
            i = start + 1;
            out.append(static_cast<char16_t>(0xDC00 + s[start]));
        } else {
            out.append(c);
        }
    }
    return out;
}

void appendUtf8(std::string& out, UChar32 c)
{
    if (c < 0 || c > 0x10FFFF)
        return;
    uint8_t buffer[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, c);
    out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
}

std::string_view prefixOfWholeCharacters(std::string_view bytes, std::size_t maxBytes)
{
    if (bytes.size() <= maxBytes)
        return bytes;
    const auto* s = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto length = static_cast<int32_t>(bytes.size());
    int32_t end = 0;
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0)
            i = start + 1;
        if (static_cast<std::size_t>(i) > maxBytes)
            break;
        end = i;
    }
    return bytes.substr(0, static_cast<std::size_t>(end));
}

icu::UnicodeString composed(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    auto result = nfc().normalize(text, status);
    return U_SUCCESS(status) ? result : text;
}

icu::UnicodeString lowercased(const icu::UnicodeString& text)
{
    icu::UnicodeString copy(text);
    copy.toLower(icu::Locale::getRoot());
    return copy;
}

icu::UnicodeString foldedForSearch(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString folded(text);
    folded.foldCase();
    auto decomposed = nfd().normalize(folded, status);
    if (U_FAILURE(status))
        return folded;
    icu::UnicodeString stripped;
    for (int32_t i = 0; i < decomposed.length();) {
        const UChar32 c = decomposed.char32At(i);
        const auto type = u_charType(c);
        if (type != U_NON_SPACING_MARK && type != U_ENCLOSING_MARK)
            stripped.append(c);
        i += U16_LENGTH(c);
    }
    return composed(stripped);
}

bool containsIgnoringCaseAndDiacritics(std::string_view haystack, std::string_view needle)
{
    if (needle.empty())
        return true;
    return foldedForSearch(decode(haystack)).indexOf(foldedForSearch(decode(needle))) >= 0;
}

std::vector<icu::UnicodeString> graphemes(const icu::UnicodeString& text)
{
    std::vector<icu::UnicodeString> out;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> it(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !it) {
        for (int32_t i = 0; i < text.length();) {
            const UChar32 c = text.char32At(i);
            out.emplace_back(c);
            i += U16_LENGTH(c);
        }
        return out;
    }
    it->setText(text);
    int32_t start = it->first();
    for (int32_t end = it->next(); end != icu::BreakIterator::DONE; start = end, end = it->next())
        out.push_back(composed(icu::UnicodeString(text, start, end - start)));
    return out;
}

} // namespace orbisk::UnicodeText
