#include "text/TextFile.h"

#include "text/UnicodeCodec.h"

namespace orbisk::TextFile {
namespace {

bool startsWith(std::string_view data, TextEncodingKind kind)
{
    return data.starts_with(byteOrderMark(kind));
}

} // namespace

TextClassification classify(std::string_view data)
{
    // The marks come before the binary test: UTF-16 text is half zero bytes.
    for (const auto kind : {TextEncodingKind::utf16BE, TextEncodingKind::utf16LE, TextEncodingKind::utf8BOM}) {
        if (startsWith(data, kind))
            return decode(data, kind) ? TextClassification::text(kind) : TextClassification::unknownEncoding();
    }
    if (looksBinary(data))
        return TextClassification::binary();
    if (UnicodeCodec::isValidUtf8(data))
        return TextClassification::text(TextEncodingKind::utf8);
    return TextClassification::unknownEncoding();
}

std::optional<std::string> decode(std::string_view data, TextEncodingKind kind)
{
    if (startsWith(data, kind))
        data.remove_prefix(byteOrderMark(kind).size());
    switch (kind) {
    case TextEncodingKind::utf8:
    case TextEncodingKind::utf8BOM:
        if (!UnicodeCodec::isValidUtf8(data))
            return std::nullopt;
        return std::string(data);
    case TextEncodingKind::utf16LE: return UnicodeCodec::utf16ToUtf8(data, false);
    case TextEncodingKind::utf16BE: return UnicodeCodec::utf16ToUtf8(data, true);
    }
    return std::nullopt;
}

std::optional<std::string> encode(std::string_view text, TextEncodingKind encoding, LineEnding lineEnding)
{
    if (!UnicodeCodec::isValidUtf8(text))
        return std::nullopt;
    std::string ended;
    if (lineEnding == LineEnding::lf) {
        ended = text;
    } else {
        const auto lineBreakBytes = lineBreak(lineEnding);
        ended.reserve(text.size() + text.size() / 32);
        for (const char c : text) {
            if (c == '\n')
                ended += lineBreakBytes;
            else
                ended.push_back(c);
        }
    }
    std::string bytes(byteOrderMark(encoding));
    switch (encoding) {
    case TextEncodingKind::utf8:
    case TextEncodingKind::utf8BOM: bytes += ended; return bytes;
    case TextEncodingKind::utf16LE:
    case TextEncodingKind::utf16BE: {
        auto units = UnicodeCodec::utf8ToUtf16(ended, encoding == TextEncodingKind::utf16BE);
        if (!units)
            return std::nullopt;
        bytes += *units;
        return bytes;
    }
    }
    return std::nullopt;
}

LineEndingSummary lineEndings(std::string_view text)
{
    std::size_t pairs = 0, loneCR = 0, loneLF = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n') {
                ++pairs;
                ++i;
            } else {
                ++loneCR;
            }
        } else if (text[i] == '\n') {
            ++loneLF;
        }
    }
    LineEndingSummary summary;
    if (pairs > loneLF && pairs >= loneCR)
        summary.dominant = LineEnding::crlf;
    else if (loneCR > pairs && loneCR > loneLF)
        summary.dominant = LineEnding::cr;
    summary.mixed = (pairs > 0) + (loneCR > 0) + (loneLF > 0) > 1;
    return summary;
}

std::string normalizeLineEndings(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            out.push_back(text[i]);
            continue;
        }
        out.push_back('\n');
        if (i + 1 < text.size() && text[i + 1] == '\n')
            ++i;
    }
    return out;
}

bool looksBinary(std::string_view data)
{
    const auto examined = data.substr(0, binaryTestLength);
    std::size_t controls = 0;
    for (const char c : examined) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == 0)
            return true;
        if (byte < 32 && byte != 9 && byte != 10 && byte != 12 && byte != 13 && byte != 27)
            ++controls;
    }
    return controls * 20 > examined.size();
}

std::string hexDump(std::string_view data, std::uint64_t firstOffset)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve((data.size() / hexBytesPerLine + 1) * 80);
    for (std::size_t line = 0; line < data.size(); line += hexBytesPerLine) {
        const std::uint64_t offset = firstOffset + line;
        int width = 8;
        while (width < 16 && (offset >> (4 * width)) != 0)
            ++width;
        for (int shift = 4 * (width - 1); shift >= 0; shift -= 4)
            out.push_back(digits[(offset >> shift) & 0xF]);
        out += "  ";
        const auto row = data.substr(line, hexBytesPerLine);
        for (std::size_t i = 0; i < hexBytesPerLine; ++i) {
            if (i < row.size()) {
                const auto byte = static_cast<unsigned char>(row[i]);
                out.push_back(digits[byte >> 4]);
                out.push_back(digits[byte & 0xF]);
            } else {
                out += "  ";
            }
            out.push_back(' ');
            if (i == 7)
                out.push_back(' ');
        }
        out += " |";
        for (const char c : row)
            out.push_back(c >= 0x20 && c < 0x7F ? c : '.');
        out += "|\n";
    }
    return out;
}

} // namespace orbisk::TextFile
