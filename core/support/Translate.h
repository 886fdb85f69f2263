// Translation of the program's English texts: the hook the app fills with Qt's translator.
#pragma once

#include <functional>
#include <string>

namespace orbisk {

/// Looks up an English key in the current language. Call it with literal arguments, as
/// translate("Orbisk", "Folder"), so that lupdate finds every core text. The part of a key after
/// "||" only tells translators apart two uses of one word; it never reaches the screen. In the
/// pseudo-language every text comes back visibly marked. Thread-safe once set up at start.
[[nodiscard]] std::string translate(const char* context, const char* key);

/// The app's look-up: returns the translation of key in context, or an empty text when there is none.
using TranslatorHook = std::function<std::string(const char* context, const char* key)>;

/// Installs the look-up and the pseudo-language switch. Call once at start, before any thread runs.
void setTranslatorHook(TranslatorHook hook);
void setPseudoLanguage(bool on);
[[nodiscard]] bool pseudoLanguage();

/// The pseudo-language form of a text: every letter outside a format specifier is marked, and the
/// text is bracketed, so that an untranslated text stands out while its placeholders still work.
[[nodiscard]] std::string pseudoLocalized(std::string_view text);

} // namespace orbisk
