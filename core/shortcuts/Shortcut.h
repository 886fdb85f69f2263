// The rows and sections of the keyboard shortcut list, with the commands their keys trigger.
#pragma once

#include "shortcuts/ShortcutCommand.h"

#include <string>
#include <vector>

namespace orbisk {

/// Where a key works, so that keys only need to differ within what is active at one time.
enum class ShortcutScope {
    mainWindow,      ///< commands of the main window (its menus and the function keys)
    fileList,        ///< keys a pane's file list handles itself (arrows, typing a name)
    folderBreakdown, ///< keys of the folder breakdown while it has the keyboard
    textWindow,      ///< the viewer and editor windows
    application,     ///< every window of the program
};

/// One key that triggers one command. key is Qt's portable key text ("Ctrl+Shift+N", "F5",
/// "Del"), ready for QKeySequence; it is empty where the view does the work without a key of its
/// own (a double-click, typing a name).
struct ShortcutBinding {
    ShortcutCommand command;
    std::string key;
    bool operator==(const ShortcutBinding&) const = default;
};

/// One row of the list: the keys as shown (any of them works), what they do, and the bindings the
/// app installs for them.
struct Shortcut {
    std::vector<std::string> keys; ///< shown keys ("Ctrl+Z", "Alt+↑", "Double-click"), localised words included
    std::string action;            ///< localised description
    std::vector<ShortcutBinding> bindings;
    ShortcutScope scope = ShortcutScope::mainWindow;
    bool operator==(const Shortcut&) const = default;
};

/// A titled group of rows, in display order.
struct ShortcutSection {
    std::string title; ///< localised
    std::vector<Shortcut> shortcuts;
    bool operator==(const ShortcutSection&) const = default;
};

} // namespace orbisk
