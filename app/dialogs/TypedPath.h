// Text a user typed over a prefilled path or name, turned back into exact bytes.
#pragma once

#include <QString>

#include <string>

namespace orbisk::TypedPath {

/// How prefilled bytes are shown in a field: their visible form (a byte that is not UTF-8 as
/// "\xE9").
[[nodiscard]] QString shown(const std::string& prefilled);

/// The bytes the user meant. A field can show a byte that is not UTF-8 only as an escape, so the
/// characters at the start and at the end of the typed text that still show the prefill as it was
/// stand for their prefilled bytes; only what the user changed between them is read as UTF-8.
[[nodiscard]] std::string bytes(const std::string& prefilled, const QString& typed);

} // namespace orbisk::TypedPath
