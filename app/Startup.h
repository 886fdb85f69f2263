// How the program starts: the shortcut dump, the layout direction, translations and settings.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {
class MainWindow;
class QuitSignals;
} // namespace orbisk

namespace orbisk::Startup {

/// Whether one argument is exactly "--print-shortcuts" (case-sensitive, any position).
[[nodiscard]] bool wantsShortcutList(const std::vector<std::string>& arguments);

/// The layout direction chosen on the command line for this run: "-reverse" or
/// "--layout-direction=rtl" mean right to left, "--layout-direction=ltr" left to right; the last
/// choice wins. Nothing when the command line does not choose.
[[nodiscard]] std::optional<bool> explicitRightToLeft(const std::vector<std::string>& arguments);

/// Whether the interface runs right to left: the explicit choice when there is one, otherwise the
/// character direction of the first preferred language ("he-IL", "ar"); left to right without one.
[[nodiscard]] bool decideRightToLeft(std::optional<bool> explicitChoice, const std::vector<std::string>& uiLanguages);

/// Lets the core's translate() look texts up in the installed Qt translators.
void installTranslatorHook();

/// Makes SIGTERM, SIGINT and SIGHUP quit as the Quit command does (see QuitSignals): the window
/// closes, which saves the session, and the event loop ends; the window's running operations are
/// cancelled and cleaned up when it is destroyed afterwards. Lasts as long as the returned object.
[[nodiscard]] std::unique_ptr<QuitSignals> quitOnSignals(MainWindow& window);

/// The whole program: prints the shortcut list and returns 0 before any application object exists
/// when asked to, otherwise runs the main window until the user quits or SIGTERM, SIGINT or SIGHUP
/// asks it to (see QuitSignals); either way the session is saved.
int run(int argc, char** argv);

} // namespace orbisk::Startup
