// What a file's bytes are: text in one of the known encodings, binary, or text in an unknown one.
#pragma once

#include "text/TextEncodingKind.h"

namespace orbisk {

/// A plain value: kind, and the encoding when the kind is text.
struct TextClassification {
    enum class Kind {
        text,
        binary,
        unknownEncoding,
    };

    Kind kind = Kind::unknownEncoding;
    TextEncodingKind encoding = TextEncodingKind::utf8; ///< meaningful for text only

    [[nodiscard]] static TextClassification text(TextEncodingKind encoding) { return {Kind::text, encoding}; }
    [[nodiscard]] static TextClassification binary() { return {Kind::binary, TextEncodingKind::utf8}; }
    [[nodiscard]] static TextClassification unknownEncoding()
    {
        return {Kind::unknownEncoding, TextEncodingKind::utf8};
    }

    [[nodiscard]] bool isText() const { return kind == Kind::text; }

    bool operator==(const TextClassification& other) const
    {
        return kind == other.kind && (kind != Kind::text || encoding == other.encoding);
    }
};

} // namespace orbisk
