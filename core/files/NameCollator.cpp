#include "files/NameCollator.h"

#include <stdexcept>

#include "support/UnicodeText.h"

namespace orbisk {
namespace {

icu::Locale collationLocale(std::string_view name)
{
    const icu::Locale locale = name.empty() ? icu::Locale::getDefault() : icu::Locale(std::string(name).c_str());
    // ICU maps LANG=C to en_US_POSIX, whose collation is ASCII order: case-sensitive, the
    // opposite of what a file list wants.
    if (std::string_view(locale.getVariant()) == "POSIX" || locale.isBogus())
        return icu::Locale::getRoot();
    return locale;
}

/// Code points, each written as UTF-8 (a lone surrogate, which stands for a byte that was not
/// UTF-8, in the same three-byte form), so that byte order is code point order.
void appendCodePoints(const icu::UnicodeString& text, std::string& out)
{
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        UnicodeText::appendUtf8(out, c);
    }
}

bool isAscii(std::string_view text)
{
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

} // namespace

NameCollator::NameCollator(std::string_view locale) : buffer_(256)
{
    UErrorCode status = U_ZERO_ERROR;
    collator_.reset(icu::Collator::createInstance(collationLocale(locale), status));
    if (U_FAILURE(status) || !collator_)
        throw std::runtime_error("ICU has no collator, not even the root one");
    collator_->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
    collator_->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    collator_->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    if (U_FAILURE(status))
        throw std::runtime_error("ICU refused a collator attribute");
}

void NameCollator::appendCollationKey(std::string_view text, std::string& out)
{
    decoded_ = UnicodeText::decode(text);
    auto length = collator_->getSortKey(decoded_, buffer_.data(), static_cast<int32_t>(buffer_.size()));
    if (static_cast<std::size_t>(length) > buffer_.size()) {
        buffer_.resize(static_cast<std::size_t>(length) * 2);
        length = collator_->getSortKey(decoded_, buffer_.data(), static_cast<int32_t>(buffer_.size()));
    }
    // The key ends in its zero terminator, which keeps a key that is a prefix of another first.
    out.append(reinterpret_cast<const char*>(buffer_.data()), static_cast<std::size_t>(length));
}

void NameCollator::appendNameKey(std::string_view name, std::string& out)
{
    appendCollationKey(name, out);
    if (isAscii(name)) {
        out.append(name); // ASCII is already composed, and its bytes are its code points
        return;
    }
    appendCodePoints(UnicodeText::composed(decoded_), out);
}

int NameCollator::compareNames(std::string_view a, std::string_view b)
{
    std::string keyA;
    std::string keyB;
    appendNameKey(a, keyA);
    appendNameKey(b, keyB);
    return keyA.compare(keyB);
}

} // namespace orbisk
