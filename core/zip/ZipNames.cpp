#include "zip/ZipNames.h"

#include <array>
#include <cstdint>

#include "support/UnicodeText.h"

namespace orbisk::ZipNames {

namespace {

// Code points of the bytes 0x80–0xFF in code page 437 (the lower half is ASCII).
constexpr std::array<char16_t, 128> codePage437 = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C,
    0x2588, 0x2584, 0x258C, 0x2590, 0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320,
    0x2321, 0x00F7, 0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
};

} // namespace

bool isValidUtf8(std::string_view bytes)
{
    std::size_t i = 0;
    while (i < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        std::size_t length = 0;
        std::uint32_t value = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
            value = lead & 0x1Fu;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            value = lead & 0x0Fu;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            value = lead & 0x07u;
        } else {
            return false;
        }
        if (i + length > bytes.size())
            return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            value = value << 6 | (next & 0x3Fu);
        }
        const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
        if (overlong || (value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF)
            return false;
        i += length;
    }
    return true;
}

std::string storedName(std::string_view path)
{
    if (!isValidUtf8(path))
        return std::string(path);
    std::string out;
    UnicodeText::composed(
        icu::UnicodeString::fromUTF8(icu::StringPiece(path.data(), static_cast<int32_t>(path.size()))))
        .toUTF8String(out);
    return out;
}

std::string decodeName(std::string_view bytes, bool utf8Flag, bool madeByUnix)
{
    if (utf8Flag || madeByUnix || isValidUtf8(bytes))
        return std::string(bytes);
    std::string out;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80)
            out.push_back(c);
        else
            UnicodeText::appendUtf8(out, codePage437[byte - 0x80]);
    }
    return out;
}

std::optional<std::vector<std::string>> safeComponents(std::string_view name)
{
    if (name.empty() || name.front() == '/' || name.front() == '\\' || name.find('\0') != std::string_view::npos)
        return std::nullopt;
    std::vector<std::string> components;
    std::string piece;
    const auto finish = [&]() {
        if (piece == "..")
            return false;
        if (!piece.empty() && piece != ".")
            components.push_back(piece);
        piece.clear();
        return true;
    };
    for (const char c : name) {
        if (c == '/' || c == '\\') {
            if (!finish())
                return std::nullopt;
        } else {
            piece.push_back(c);
        }
    }
    if (!finish() || components.empty())
        return std::nullopt;
    return components;
}

bool linkStaysInside(std::size_t depth, std::string_view target)
{
    if (target.empty() || target.front() == '/' || target.find('\0') != std::string_view::npos)
        return false;
    std::size_t level = depth;
    std::size_t start = 0;
    while (start <= target.size()) {
        const auto end = std::min(target.find('/', start), target.size());
        const std::string_view piece = target.substr(start, end - start);
        if (piece == "..") {
            if (level == 0)
                return false;
            --level;
        } else if (!piece.empty() && piece != ".") {
            ++level;
        }
        start = end + 1;
    }
    return true;
}

} // namespace orbisk::ZipNames
