#include "shortcuts/ShortcutCatalog.h"

#include "shortcuts/KeyNotation.h"
#include "support/Translate.h"
#include "support/UnicodeText.h"

#include <algorithm>
#include <initializer_list>

namespace orbisk::ShortcutCatalog {
namespace {

using C = ShortcutCommand;
using S = ShortcutScope;

/// One key of a row as the table writes it: a portable key for a command, or a worded key.
struct Key {
    C command;
    const char* portable; ///< nullptr for a worded key
    std::string word;     ///< the shown words of a worded key
};

Key key(C command, const char* portable)
{
    return {command, portable, {}};
}
Key word(C command, std::string text)
{
    return {command, nullptr, std::move(text)};
}

class TableBuilder {
public:
    void section(std::string title, S scope)
    {
        sections_.push_back({std::move(title), {}});
        scope_ = scope;
    }

    void row(std::initializer_list<Key> keys, std::string action) { row(scope_, keys, std::move(action)); }

    void row(S scope, std::initializer_list<Key> keys, std::string action)
    {
        Shortcut shortcut{{}, std::move(action), {}, scope};
        for (const auto& k : keys) {
            if (k.portable != nullptr) {
                shortcut.keys.push_back(KeyNotation::displayed(k.portable));
                shortcut.bindings.push_back({k.command, k.portable});
            } else {
                shortcut.keys.push_back(k.word);
                // A worded key gives its row an identity only when the row has no real key.
                if (shortcut.bindings.empty() && keys.size() == 1)
                    shortcut.bindings.push_back({k.command, {}});
            }
        }
        sections_.back().shortcuts.push_back(std::move(shortcut));
    }

    /// A row whose one shown key stands for a run of keys, as "Ctrl+1 … Ctrl+9".
    void rangeRow(std::string shown, std::vector<ShortcutBinding> bindings, std::string action)
    {
        sections_.back().shortcuts.push_back({{std::move(shown)}, std::move(action), std::move(bindings), scope_});
    }

    std::vector<ShortcutSection> take() { return std::move(sections_); }

private:
    std::vector<ShortcutSection> sections_;
    S scope_ = S::mainWindow;
};

// Keys follow Linux habits where they differ from other systems (Delete moves to the Trash,
// Alt+arrows navigate, Ctrl+H shows hidden files, Ctrl+L goes to a typed folder) and stay clear of
// the keys desktops keep for themselves: Ctrl+Alt with arrows, T, L, D, Delete or function keys,
// Alt+F1…F10, Ctrl+Shift+U (Unicode input) and Ctrl+Alt+V (clipboard managers).
std::vector<ShortcutSection> buildTable()
{
    TableBuilder t;
    t.section(translate("Orbisk", "Ask"), S::mainWindow);
    t.row(
        {key(C::ask, "Ctrl+K")},
        translate("Orbisk",
                  "Ask: type what to do in plain language, check the plan, then Run (copy, move, select, new folder)"));

    t.section(translate("Orbisk", "Function Keys"), S::mainWindow);
    t.row({key(C::showShortcuts, "F1")}, translate("Orbisk", "Keyboard shortcuts (this page)"));
    t.row({key(C::viewFile, "F3")}, translate("Orbisk", "View file"));
    t.row({key(C::editFile, "F4")}, translate("Orbisk", "Edit file (text) or open it in its application"));
    t.row({key(C::copyToOtherPane, "F5")}, translate("Orbisk", "Copy to the other pane"));
    t.row({key(C::moveToOtherPane, "F6")}, translate("Orbisk", "Move or rename to the other pane"));
    t.row({key(C::renameInPlace, "Shift+F6")}, translate("Orbisk", "Rename in place"));
    t.row({key(C::newFolder, "F7")}, translate("Orbisk", "New folder"));
    t.row({key(C::moveToTrash, "F8")}, translate("Orbisk", "Move to Trash (with confirmation)"));
    t.row({key(C::compressToOtherPane, "Shift+F9")},
          translate("Orbisk", "Compress the selection to a ZIP in the other pane"));
    t.row({key(C::extractToOtherPane, "Ctrl+Shift+F9")}, translate("Orbisk", "Extract a ZIP into the other pane"));
    t.row({key(C::undo, "Ctrl+Z"), key(C::redo, "Ctrl+Shift+Z")},
          translate("Orbisk", "Undo / redo the last file operation"));
    t.row({key(C::quit, "F10")}, translate("Orbisk", "Quit"));

    t.section(translate("Orbisk", "Panes and Tabs"), S::mainWindow);
    t.row({key(C::switchPane, "Tab")}, translate("Orbisk", "Switch the active pane"));
    t.row({key(C::swapPanes, "Ctrl+U")}, translate("Orbisk", "Swap panes"));
    t.row({key(C::sameFolderInOtherPane, "Ctrl+Alt+U")}, translate("Orbisk", "Same folder in the other pane"));
    t.row({key(C::newTab, "Ctrl+T"), key(C::closeTab, "Ctrl+W")}, translate("Orbisk", "New tab / close tab"));
    t.row({key(C::nextTab, "Ctrl+Tab"), key(C::previousTab, "Ctrl+Shift+Tab")},
          translate("Orbisk", "Next / previous tab"));
    t.row({key(C::refresh, "Ctrl+R")}, translate("Orbisk", "Refresh"));
    t.row({key(C::toggleSidebar, "F9")}, translate("Orbisk", "Show / hide the sidebar"));
    t.row({key(C::focusSidebar, "Ctrl+Alt+S")},
          translate("Orbisk", "Move the keyboard to the sidebar (Enter opens, Esc returns)"));

    t.section(translate("Orbisk", "Navigation"), S::mainWindow);
    t.row(S::fileList, {key(C::openItem, "Return"), word(C::openItem, translate("Orbisk", "Double-click"))},
          translate("Orbisk", "Open folder or file (default application)"));
    t.row({key(C::enclosingFolder, "Alt+Up")}, translate("Orbisk", "Enclosing folder"));
    t.row({key(C::back, "Alt+Left"), key(C::forward, "Alt+Right")}, translate("Orbisk", "Back / forward"));
    t.row(S::fileList, {key(C::previousItem, "Up"), key(C::nextItem, "Down")},
          translate("Orbisk", "Previous / next item (Shift extends the selection)"));
    t.row(S::fileList, {key(C::firstItem, "Home"), key(C::lastItem, "End")},
          translate("Orbisk", "First / last item (Shift extends the selection)"));
    t.row(S::fileList, {key(C::pageUp, "PgUp"), key(C::pageDown, "PgDown")},
          translate("Orbisk", "Page up / down (Shift extends the selection)"));
    t.row({key(C::goToFolder, "Ctrl+L")}, translate("Orbisk", "Go to folder (absolute, ~ or relative path)"));
    t.row(S::fileList, {word(C::jumpToTypedName, translate("Orbisk", "Type a name"))},
          translate("Orbisk", "Jump to the first matching item"));

    t.section(translate("Orbisk", "Places and Favorites"), S::mainWindow);
    t.row({key(C::goHome, "Alt+Home")}, translate("Orbisk", "Home"));
    t.row({key(C::goDesktop, "Ctrl+Shift+D")}, translate("Orbisk", "Desktop"));
    t.row({key(C::goDocuments, "Ctrl+Shift+O")}, translate("Orbisk", "Documents"));
    t.row({key(C::goDownloads, "Ctrl+Shift+L")}, translate("Orbisk", "Downloads"));
    t.row({key(C::addFavorite, "Ctrl+B")}, translate("Orbisk", "Add the current folder to Favorites"));
    t.rangeRow("Ctrl+1 … Ctrl+9",
               {{C::goToFavorite1, "Ctrl+1"},
                {C::goToFavorite2, "Ctrl+2"},
                {C::goToFavorite3, "Ctrl+3"},
                {C::goToFavorite4, "Ctrl+4"},
                {C::goToFavorite5, "Ctrl+5"},
                {C::goToFavorite6, "Ctrl+6"},
                {C::goToFavorite7, "Ctrl+7"},
                {C::goToFavorite8, "Ctrl+8"},
                {C::goToFavorite9, "Ctrl+9"}},
               translate("Orbisk", "Go to favorite 1–9"));

    t.section(translate("Orbisk", "Selection"), S::mainWindow);
    t.row({key(C::selectAll, "Ctrl+A")}, translate("Orbisk", "Select all"));
    t.row({key(C::deselectAll, "Ctrl+Shift+A")}, translate("Orbisk", "Deselect all"));
    t.row({key(C::invertSelection, "Ctrl+Shift+I")}, translate("Orbisk", "Invert selection"));
    t.row({key(C::selectByPattern, "Ctrl+=")}, translate("Orbisk", "Select by pattern"));
    t.row({key(C::deselectByPattern, "Ctrl+-")}, translate("Orbisk", "Deselect by pattern"));

    t.section(translate("Orbisk", "Files"), S::mainWindow);
    t.row({key(C::quickPreview, "Space"), key(C::quickPreview, "Ctrl+Y")}, translate("Orbisk", "Quick preview"));
    t.row({key(C::openWithDefaultApplication, "Ctrl+O")}, translate("Orbisk", "Open with the default application"));
    t.row({key(C::revealInFileManager, "Ctrl+Alt+R")}, translate("Orbisk", "Reveal in the system file manager"));
    t.row({key(C::newFolder, "Ctrl+Shift+N")}, translate("Orbisk", "New folder"));
    t.row({key(C::newFolderWithSelection, "Ctrl+Alt+N")},
          translate("Orbisk", "New folder with the selected items in it"));
    t.row({key(C::newTextFile, "Shift+F4")}, translate("Orbisk", "New empty text file"));
    t.row({key(C::duplicate, "Ctrl+D")}, translate("Orbisk", "Duplicate"));
    t.row({key(C::moveToTrash, "Del")}, translate("Orbisk", "Move to Trash (with confirmation)"));
    t.row({key(C::copyFiles, "Ctrl+C"), key(C::pasteFiles, "Ctrl+V")},
          translate("Orbisk", "Copy / paste files (when the list has focus)"));
    t.row({key(C::moveCopiedFilesHere, "Ctrl+Shift+V")}, translate("Orbisk", "Move the copied files here"));
    t.row({key(C::copyNames, "Ctrl+Shift+C")}, translate("Orbisk", "Copy item names as text"));
    t.row({key(C::copyPaths, "Ctrl+Alt+C")}, translate("Orbisk", "Copy full paths as text"));
    t.row({key(C::calculateFolderSizes, "Alt+Shift+Return")}, translate("Orbisk", "Calculate folder sizes"));
    t.row({key(C::batchRename, "Ctrl+M")}, translate("Orbisk", "Batch rename"));
    t.row({key(C::syncFolders, "Ctrl+Shift+Y")},
          translate("Orbisk", "Sync the two panes’ folders (compare, review, then sync)"));

    t.section(translate("Orbisk", "Folder Breakdown"), S::folderBreakdown);
    t.row(S::mainWindow, {key(C::toggleBreakdown, "Ctrl+Shift+B")},
          translate("Orbisk", "Show in the other pane what the folder under the cursor is made of (again to close); it "
                              "follows the cursor unless Commands › Breakdown Follows Cursor is off"));
    t.row({key(C::breakdownOpen, "Return"), word(C::breakdownOpen, translate("Orbisk", "Double-click"))},
          translate("Orbisk", "Break down the selected subfolder"));
    t.row({key(C::breakdownEnclosingFolder, "Alt+Up")}, translate("Orbisk", "Enclosing folder"));
    t.row({key(C::closeBreakdown, "Esc")}, translate("Orbisk", "Back to the file list"));

    t.section(translate("Orbisk", "Search and View"), S::mainWindow);
    t.row({key(C::filter, "Ctrl+F")}, translate("Orbisk", "Filter the active pane"));
    t.row({key(C::clearFilter, "Esc")}, translate("Orbisk", "Clear the filter"));
    t.row({key(C::findFiles, "Ctrl+Shift+F")}, translate("Orbisk", "Find files in subfolders"));
    t.row({key(C::toggleHiddenFiles, "Ctrl+H")}, translate("Orbisk", "Show / hide hidden files"));
    t.row({key(C::sortByName, "Ctrl+Alt+1"), key(C::sortBySize, "Ctrl+Alt+2"), key(C::sortByDate, "Ctrl+Alt+3"),
           key(C::sortByKind, "Ctrl+Alt+4")},
          translate("Orbisk", "Sort by name / size / date modified / kind"));
    t.row({key(C::toggleFullScreen, "F11")}, translate("Orbisk", "Full screen"));

    t.section(translate("Orbisk", "Viewer and Editor"), S::textWindow);
    t.row({key(C::saveText, "Ctrl+S"), key(C::saveTextAs, "Ctrl+Shift+S")}, translate("Orbisk", "Save / save as"));
    t.row({key(C::findText, "Ctrl+F"), key(C::findNextText, "Ctrl+G")}, translate("Orbisk", "Find / find next"));
    t.row({key(C::undoText, "Ctrl+Z"), key(C::redoText, "Ctrl+Shift+Z")}, translate("Orbisk", "Undo / redo"));

    t.section(translate("Orbisk", "App and Windows"), S::application);
    t.row({key(C::showSettings, "Ctrl+,")}, translate("Orbisk", "Settings"));
    t.row({key(C::showShortcuts, "Ctrl+?")}, translate("Orbisk", "Keyboard shortcuts"));
    t.row({key(C::showMainWindow, "Ctrl+0")}, translate("Orbisk", "Main window"));
    t.row({key(C::closeWindow, "Ctrl+Shift+W")}, translate("Orbisk", "Close window"));
    t.row({key(C::quit, "Ctrl+Q")}, translate("Orbisk", "Quit"));
    return t.take();
}

bool contains(std::string_view text, std::string_view query)
{
    return UnicodeText::containsIgnoringCaseAndDiacritics(text, query);
}

std::string escapedBars(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        if (c == '|')
            out += '\\';
        out += c;
    }
    return out;
}

} // namespace

std::vector<ShortcutSection> sections()
{
    return buildTable();
}

std::vector<ShortcutSection> filtered(std::string_view query)
{
    const auto first = query.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return sections();
    query = query.substr(first, query.find_last_not_of(" \t") - first + 1);

    std::vector<ShortcutSection> out;
    for (auto& section : sections()) {
        if (!contains(section.title, query)) {
            std::erase_if(section.shortcuts, [&](const Shortcut& shortcut) {
                return std::ranges::none_of(shortcut.keys, [&](const auto& k) { return contains(k, query); }) &&
                       !contains(shortcut.action, query);
            });
        }
        if (!section.shortcuts.empty())
            out.push_back(std::move(section));
    }
    return out;
}

std::string markdown()
{
    const auto all = sections();
    std::string helpKeys;
    for (const auto& portable : keys(ShortcutCommand::showShortcuts))
        helpKeys += (helpKeys.empty() ? "" : " or ") + KeyNotation::displayed(portable);

    std::vector<std::string> lines = {
        "# Orbisk Keyboard Shortcuts",
        "",
        "<!-- Generated from ShortcutCatalog: build/bin/orbisk --print-shortcuts > docs/SHORTCUTS.md -->",
        "",
        "The same list is in the app under **Help › Keyboard Shortcuts** (" + helpKeys + ").",
        "",
        "* Function keys may need Fn, depending on the keyboard settings of your desktop.",
        "* File commands are disabled while a text field has focus, so typing is never intercepted.",
        "* The function key bar at the bottom of the window can be clicked too. Hide it with **View › Hide Function "
        "Key Bar**.",
    };
    for (const auto& section : all) {
        lines.insert(lines.end(), {"", "## " + section.title, "", "| Keys | Action |", "| --- | --- |"});
        for (const auto& shortcut : section.shortcuts) {
            std::string shownKeys;
            for (const auto& k : shortcut.keys)
                shownKeys += (shownKeys.empty() ? "`" : " / `") + k + "`";
            lines.push_back("| " + shownKeys + " | " + escapedBars(shortcut.action) + " |");
        }
    }
    std::string out;
    for (const auto& line : lines)
        out += line + "\n";
    return out;
}

std::vector<std::string> keys(ShortcutCommand command)
{
    std::vector<std::string> out;
    for (const auto& section : sections()) {
        for (const auto& shortcut : section.shortcuts) {
            for (const auto& binding : shortcut.bindings) {
                if (binding.command == command && !binding.key.empty())
                    out.push_back(binding.key);
            }
        }
    }
    return out;
}

} // namespace orbisk::ShortcutCatalog
