#include "text/TextFile.h"

#include "text/UnicodeCodec.h"

#include <algorithm>
#include <cstring>

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
    // Line feeds become the file's line ending, written straight after the mark; only UTF-16
    // needs a second pass, so UTF-8 text is copied once.
    const auto appendEnded = [lineEnding](std::string& out, std::string_view from) {
        if (lineEnding == LineEnding::lf) {
            out.append(from);
            return;
        }
        const auto lineBreakBytes = lineBreak(lineEnding);
        std::size_t start = 0;
        for (auto at = from.find('\n'); at != std::string_view::npos; at = from.find('\n', start)) {
            out.append(from, start, at - start);
            out.append(lineBreakBytes);
            start = at + 1;
        }
        out.append(from, start);
    };
    std::string bytes(byteOrderMark(encoding));
    if (encoding == TextEncodingKind::utf8 || encoding == TextEncodingKind::utf8BOM) {
        bytes.reserve(bytes.size() + text.size() + (lineEnding == LineEnding::crlf ? text.size() / 16 : 0));
        appendEnded(bytes, text);
        return bytes;
    }
    std::string ended;
    if (lineEnding != LineEnding::lf)
        appendEnded(ended, text);
    auto units = UnicodeCodec::utf8ToUtf16(lineEnding == LineEnding::lf ? text : std::string_view(ended),
                                           encoding == TextEncodingKind::utf16BE);
    if (!units)
        return std::nullopt;
    bytes += *units;
    return bytes;
}

LineEndingSummary lineEndings(std::string_view text)
{
    // Counting bytes is vectorised; only the carriage returns need a look at their neighbour.
    const auto returns = static_cast<std::size_t>(std::ranges::count(text, '\r'));
    const auto feeds = static_cast<std::size_t>(std::ranges::count(text, '\n'));
    std::size_t pairs = 0;
    for (std::size_t at = returns ? text.find('\r') : std::string_view::npos; at != std::string_view::npos;
         at = text.find('\r', at + 1))
        pairs += at + 1 < text.size() && text[at + 1] == '\n';
    const std::size_t loneCR = returns - pairs, loneLF = feeds - pairs;
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
    std::size_t from = 0;
    for (auto at = text.find('\r'); at != std::string_view::npos; at = text.find('\r', from)) {
        out.append(text, from, at - from);
        out.push_back('\n');
        from = at + 1 < text.size() && text[at + 1] == '\n' ? at + 2 : at + 1;
    }
    out.append(text, from);
    return out;
}

bool looksBinary(std::string_view data)
{
    const auto examined = data.substr(0, binaryTestLength);
    if (std::memchr(examined.data(), 0, examined.size()) != nullptr)
        return true;
    // Every file a content search opens (and every file the viewer opens) passes through here, so the count runs
    // sixteen bytes at a time in byte-wide counters (a GNU vector type), emptied every 255 rounds before they could
    // overflow.
    using Bytes = unsigned char __attribute__((vector_size(16)));
    const auto isControl = [](unsigned char byte) -> std::size_t {
        return byte < 32 && byte != 9 && byte != 10 && byte != 12 && byte != 13 && byte != 27;
    };
    const auto* bytes = reinterpret_cast<const unsigned char*>(examined.data());
    const std::size_t size = examined.size();
    constexpr std::size_t lanes = sizeof(Bytes);
    std::size_t controls = 0;
    std::size_t i = 0;
    while (i + lanes <= size) {
        Bytes counts{};
        for (int round = 0; round < 255 && i + lanes <= size; ++round, i += lanes) {
            Bytes b;
            std::memcpy(&b, bytes + i, lanes);
            const auto counted = (b < 32) & (b != 9) & (b != 10) & (b != 12) & (b != 13) & (b != 27);
            counts += reinterpret_cast<const Bytes&>(counted) & 1;
        }
        for (std::size_t k = 0; k < lanes; ++k)
            controls += counts[k];
    }
    for (; i < size; ++i)
        controls += isControl(bytes[i]);
    return controls * 20 > size;
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
