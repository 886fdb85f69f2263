#include "text/UnicodeCodec.h"

#include <cstdint>

namespace orbisk::UnicodeCodec {
namespace {

// Reads one code point at `at`, advancing it; -1 for an ill-formed sequence (the table of
// well-formed byte sequences in the Unicode standard, chapter 3).
std::int32_t nextCodePoint(std::string_view bytes, std::size_t& at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80) {
        ++at;
        return lead;
    }
    int length = 0;
    unsigned char low = 0x80, high = 0xBF;
    std::int32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0F;
        if (lead == 0xE0)
            low = 0xA0; // overlong
        if (lead == 0xED)
            high = 0x9F; // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07;
        if (lead == 0xF0)
            low = 0x90; // overlong
        if (lead == 0xF4)
            high = 0x8F; // past U+10FFFF
    } else {
        return -1;
    }
    if (bytes.size() - at < static_cast<std::size_t>(length))
        return -1;
    for (int i = 1; i < length; ++i) {
        const unsigned char next = byte(at + static_cast<std::size_t>(i));
        if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xBF))
            return -1;
        value = (value << 6) | (next & 0x3F);
    }
    at += static_cast<std::size_t>(length);
    return value;
}

void appendUtf8(std::string& out, std::uint32_t c)
{
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

void appendUnit(std::string& out, std::uint32_t unit, bool bigEndian)
{
    const auto high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
    out.push_back(bigEndian ? high : low);
    out.push_back(bigEndian ? low : high);
}

} // namespace

bool isValidUtf8(std::string_view bytes)
{
    std::size_t at = 0;
    while (at < bytes.size()) {
        // ASCII runs are the common case; skip them eight bytes at a time.
        while (bytes.size() - at >= 8) {
            std::uint64_t word;
            __builtin_memcpy(&word, bytes.data() + at, 8);
            if (word & 0x8080808080808080ULL)
                break;
            at += 8;
        }
        if (at < bytes.size() && nextCodePoint(bytes, at) < 0)
            return false;
    }
    return true;
}

std::optional<std::string> utf16ToUtf8(std::string_view bytes, bool bigEndian)
{
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    std::string out;
    out.reserve(bytes.size());
    const auto unitAt = [&](std::size_t i) -> std::uint32_t {
        const auto first = static_cast<unsigned char>(bytes[i]), second = static_cast<unsigned char>(bytes[i + 1]);
        return bigEndian ? (first << 8 | second) : (second << 8 | first);
    };
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const std::uint32_t unit = unitAt(i);
        if (unit >= 0xDC00 && unit <= 0xDFFF)
            return std::nullopt; // a low surrogate without its high one
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (i + 3 >= bytes.size())
                return std::nullopt;
            const std::uint32_t next = unitAt(i + 2);
            if (next < 0xDC00 || next > 0xDFFF)
                return std::nullopt;
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            i += 2;
            continue;
        }
        appendUtf8(out, unit);
    }
    return out;
}

std::optional<std::string> utf8ToUtf16(std::string_view text, bool bigEndian)
{
    std::string out;
    out.reserve(text.size() * 2);
    std::size_t at = 0;
    while (at < text.size()) {
        const std::int32_t c = nextCodePoint(text, at);
        if (c < 0)
            return std::nullopt;
        if (c >= 0x10000) {
            const auto offset = static_cast<std::uint32_t>(c - 0x10000);
            appendUnit(out, 0xD800 + (offset >> 10), bigEndian);
            appendUnit(out, 0xDC00 + (offset & 0x3FF), bigEndian);
        } else {
            appendUnit(out, static_cast<std::uint32_t>(c), bigEndian);
        }
    }
    return out;
}

} // namespace orbisk::UnicodeCodec
