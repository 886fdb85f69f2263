// A text file as the editor holds it: line feeds only, with what is needed to write it back.
#pragma once

#include "text/FileStamp.h"
#include "text/LineEnding.h"
#include "text/TextEncodingKind.h"

#include <string>

namespace orbisk {

struct LoadedText {
    std::string text; ///< UTF-8, every line break a single line feed
    TextEncodingKind encoding = TextEncodingKind::utf8;
    LineEnding lineEnding = LineEnding::lf; ///< the dominant style
    bool hasMixedLineEndings = false;
    FileStamp stamp; ///< the file as it was read, to refuse saving over someone else's change

    bool operator==(const LoadedText&) const = default;
};

} // namespace orbisk
