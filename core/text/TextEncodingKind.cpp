#include "text/TextEncodingKind.h"

#include "support/Translate.h"

namespace orbisk {

std::string_view rawValue(TextEncodingKind kind)
{
    switch (kind) {
    case TextEncodingKind::utf8: return "utf8";
    case TextEncodingKind::utf8BOM: return "utf8BOM";
    case TextEncodingKind::utf16LE: return "utf16LE";
    case TextEncodingKind::utf16BE: return "utf16BE";
    }
    return {};
}

std::optional<TextEncodingKind> textEncodingKind(std::string_view raw)
{
    for (const auto kind : allTextEncodingKinds)
        if (rawValue(kind) == raw)
            return kind;
    return std::nullopt;
}

std::string displayName(TextEncodingKind kind)
{
    switch (kind) {
    case TextEncodingKind::utf8: return translate("Orbisk", "UTF-8");
    case TextEncodingKind::utf8BOM: return translate("Orbisk", "UTF-8 with BOM");
    case TextEncodingKind::utf16LE: return translate("Orbisk", "UTF-16 LE (BOM)");
    case TextEncodingKind::utf16BE: return translate("Orbisk", "UTF-16 BE (BOM)");
    }
    return {};
}

std::string_view byteOrderMark(TextEncodingKind kind)
{
    switch (kind) {
    case TextEncodingKind::utf8: return {};
    case TextEncodingKind::utf8BOM: return "\xEF\xBB\xBF";
    case TextEncodingKind::utf16LE: return "\xFF\xFE";
    case TextEncodingKind::utf16BE: return "\xFE\xFF";
    }
    return {};
}

} // namespace orbisk
