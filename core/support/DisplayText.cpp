#include "support/DisplayText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdio>

namespace orbisk::DisplayText {
namespace {

void appendHexByte(std::string& out, unsigned char byte)
{
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "\\x%02X", byte);
    out += buffer;
}

void appendCodePointEscape(std::string& out, UChar32 c)
{
    switch (c) {
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    default: break;
    }
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "\\u{%04X}", static_cast<unsigned>(c));
    out += buffer;
}

bool isInvisible(UChar32 c)
{
    // Joiners stay: emoji sequences and Persian words need them to look right.
    if (c == 0x200C || c == 0x200D)
        return false;
    switch (u_charType(c)) {
    case U_CONTROL_CHAR:
    case U_FORMAT_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
    case U_UNASSIGNED:
    case U_PRIVATE_USE_CHAR:
    case U_SURROGATE: return true;
    default: return false;
    }
}

// Calls f(codePoint, start, end) for each code point; ill-formed bytes come one at a time as -1.
template <class F> void forEachCodePoint(std::string_view raw, F&& f)
{
    const auto* s = reinterpret_cast<const uint8_t*>(raw.data());
    const auto length = static_cast<int32_t>(raw.size());
    int32_t i = 0;
    while (i < length) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0) {
            i = start + 1;
            f(-1, start, i);
        } else {
            f(c, start, i);
        }
    }
}

bool startsAsPath(std::string_view raw)
{
    return (raw.starts_with("/") || raw.starts_with("~/")) && raw.find('\n') == std::string_view::npos;
}

} // namespace

std::string visible(std::string_view raw)
{
    std::string out;
    out.reserve(raw.size());
    forEachCodePoint(raw, [&](UChar32 c, int32_t start, int32_t end) {
        if (c < 0)
            appendHexByte(out, static_cast<unsigned char>(raw[static_cast<std::size_t>(start)]));
        else if (isInvisible(c))
            appendCodePointEscape(out, c);
        else
            out += raw.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
    });
    return out;
}

bool canReorder(std::string_view raw)
{
    bool found = false;
    forEachCodePoint(raw, [&](UChar32 c, int32_t, int32_t) {
        if (c < 0 || found)
            return;
        switch (u_charDirection(c)) {
        case U_RIGHT_TO_LEFT:
        case U_RIGHT_TO_LEFT_ARABIC:
        case U_ARABIC_NUMBER:
        case U_LEFT_TO_RIGHT_EMBEDDING:
        case U_LEFT_TO_RIGHT_OVERRIDE:
        case U_RIGHT_TO_LEFT_EMBEDDING:
        case U_RIGHT_TO_LEFT_OVERRIDE:
        case U_POP_DIRECTIONAL_FORMAT:
        case U_LEFT_TO_RIGHT_ISOLATE:
        case U_RIGHT_TO_LEFT_ISOLATE:
        case U_FIRST_STRONG_ISOLATE:
        case U_POP_DIRECTIONAL_ISOLATE: found = true; break;
        default: break;
        }
    });
    return found;
}

std::string isolatedPath(std::string_view path)
{
    // Each component is isolated on its own as well, so that two right-to-left components never
    // run together and swap places across the "/" between them.
    std::string out(leftToRightIsolate);
    std::size_t start = 0;
    while (start <= path.size()) {
        auto slash = path.find('/', start);
        if (slash == std::string_view::npos)
            slash = path.size();
        const auto component = path.substr(start, slash - start);
        if (canReorder(component)) {
            out += firstStrongIsolate;
            out += visible(component);
            out += popIsolate;
        } else {
            out += visible(component);
        }
        if (slash < path.size())
            out += '/';
        start = slash + 1;
    }
    out += popIsolate;
    return out;
}

std::string isolatedArgument(std::string_view raw, bool rightToLeftInterface)
{
    if (!rightToLeftInterface && !canReorder(raw))
        return visible(raw);
    if (startsAsPath(raw))
        return isolatedPath(raw);
    std::string out(firstStrongIsolate);
    out += visible(raw);
    out += popIsolate;
    return out;
}

std::string displayPath(std::string_view path, bool rightToLeftInterface)
{
    if (!rightToLeftInterface && !canReorder(path))
        return visible(path);
    return isolatedPath(path);
}

} // namespace orbisk::DisplayText
