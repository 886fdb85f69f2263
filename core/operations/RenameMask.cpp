#include "operations/RenameMask.h"

#include <unicode/brkiter.h>
#include <unicode/utf8.h>

#include <memory>
#include <set>

#include "operations/ItemActions.h"
#include "support/L10n.h"
#include "support/UnicodeText.h"

namespace orbisk::RenameMask {

namespace {

/// The user-perceived characters of bytes, each as the exact bytes it was made of. A byte that is
/// not part of valid UTF-8 stands alone (as its lone surrogate, it never joins a cluster).
std::vector<std::string_view> characters(std::string_view bytes)
{
    icu::UnicodeString text;
    std::vector<std::size_t> byteOffsetOfUnit; // UTF-16 unit index → byte offset
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto length = static_cast<int32_t>(bytes.size());
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c = 0;
        U8_NEXT(data, i, length, c);
        if (c < 0) {
            c = 0xDC00 + data[start];
            i = start + 1;
        }
        const auto before = text.length();
        text.append(c);
        for (auto unit = before; unit < text.length(); ++unit)
            byteOffsetOfUnit.push_back(static_cast<std::size_t>(start));
    }
    byteOffsetOfUnit.push_back(bytes.size());

    std::vector<std::string_view> out;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> it(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !it) {
        // Without break rules, code points are the next best unit.
        for (int32_t unit = 0; unit < text.length(); unit = text.moveIndex32(unit, 1)) {
            const auto next = text.moveIndex32(unit, 1);
            out.push_back(bytes.substr(byteOffsetOfUnit[unit], byteOffsetOfUnit[next] - byteOffsetOfUnit[unit]));
        }
        return out;
    }
    it->setText(text);
    int32_t start = it->first();
    for (int32_t end = it->next(); end != icu::BreakIterator::DONE; start = end, end = it->next())
        out.push_back(bytes.substr(byteOffsetOfUnit[start], byteOffsetOfUnit[end] - byteOffsetOfUnit[start]));
    return out;
}

std::string expand(std::string_view pattern, std::string_view source)
{
    const auto sourceCharacters = characters(source);
    std::string result;
    std::size_t position = 0;
    for (const auto character : characters(pattern)) {
        if (character == "*")
            result += source;
        else if (character == "?") {
            if (position < sourceCharacters.size())
                result += sourceCharacters[position];
        } else
            result += character;
        ++position;
    }
    return result;
}

} // namespace

bool isMask(std::string_view text)
{
    return text.find_first_of("*?") != std::string_view::npos;
}

std::string apply(std::string_view mask, std::string_view name)
{
    const auto maskDot = mask.rfind('.');
    if (maskDot == std::string_view::npos)
        return expand(mask, name);
    const auto nameDot = name.rfind('.');
    const bool nameSplits = nameDot != std::string_view::npos && nameDot != 0;
    const auto stem = nameSplits ? name.substr(0, nameDot) : name;
    const auto extension = nameSplits ? name.substr(nameDot + 1) : std::string_view{};
    auto result = expand(mask.substr(0, maskDot), stem);
    const auto resultExtension = expand(mask.substr(maskDot + 1), extension);
    if (!resultExtension.empty())
        result += "." + resultExtension;
    return result;
}

std::expected<std::vector<std::string>, FileOperationError> apply(std::string_view mask,
                                                                  std::span<const std::string> names)
{
    std::vector<std::string> results;
    std::set<icu::UnicodeString> produced;
    for (const auto& name : names) {
        auto result = RenameMask::apply(mask, std::string_view(name));
        if (auto valid = ItemActions::validateName(result); !valid)
            return std::unexpected(valid.error());
        if (!produced.insert(UnicodeText::lowercased(UnicodeText::decode(result))).second) {
            auto reason = L(translate("Orbisk", "more than one item would be named “%@”."), result);
            return std::unexpected(FileOperationError::invalidName(result, std::move(reason)));
        }
        results.push_back(std::move(result));
    }
    return results;
}

} // namespace orbisk::RenameMask
