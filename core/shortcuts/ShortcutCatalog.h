// The one table of the program's keyboard commands: the shortcut list, its search and its document.
#pragma once

#include "shortcuts/Shortcut.h"

#include <string>
#include <string_view>
#include <vector>

namespace orbisk::ShortcutCatalog {

/// Every section in display order, with titles, actions and the worded keys ("Double-click",
/// "Type a name") translated now. Built fresh on each call; safe from any thread once the
/// translator is installed.
[[nodiscard]] std::vector<ShortcutSection> sections();

/// The sections a search keeps. The query is trimmed of spaces and tabs; an empty query keeps
/// everything. A section whose title contains the query is kept whole; otherwise it keeps the rows
/// where a shown key, or else the action, contains it; sections left empty are dropped. "Contains"
/// ignores case and diacritics and uses the translated texts.
[[nodiscard]] std::vector<ShortcutSection> filtered(std::string_view query);

/// The list as a Markdown document ending in one newline, in the current language (the committed
/// docs/SHORTCUTS.md is the English one). Actions have "|" escaped so that no row breaks the table.
[[nodiscard]] std::string markdown();

/// Qt's portable key texts that trigger command, in table order (possibly several, as F7 and
/// Ctrl+Shift+N for a new folder); empty when the view handles it without a key of its own.
[[nodiscard]] std::vector<std::string> keys(ShortcutCommand command);

} // namespace orbisk::ShortcutCatalog
