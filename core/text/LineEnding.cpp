#include "text/LineEnding.h"

#include "support/Translate.h"

namespace orbisk {

std::string_view rawValue(LineEnding ending)
{
    switch (ending) {
    case LineEnding::lf: return "lf";
    case LineEnding::crlf: return "crlf";
    case LineEnding::cr: return "cr";
    }
    return {};
}

std::optional<LineEnding> lineEnding(std::string_view raw)
{
    for (const auto ending : allLineEndings)
        if (rawValue(ending) == raw)
            return ending;
    return std::nullopt;
}

std::string displayName(LineEnding ending)
{
    // The classic Mac is named because that is where a user meets lone CR endings.
    switch (ending) {
    case LineEnding::lf: return translate("Orbisk", "LF (Unix/macOS)");
    case LineEnding::crlf: return translate("Orbisk", "CRLF (Windows)");
    case LineEnding::cr: return translate("Orbisk", "CR (classic Mac)");
    }
    return {};
}

std::string_view lineBreak(LineEnding ending)
{
    switch (ending) {
    case LineEnding::lf: return "\n";
    case LineEnding::crlf: return "\r\n";
    case LineEnding::cr: return "\r";
    }
    return "\n";
}

} // namespace orbisk
