#include <gtest/gtest.h>

#include "shortcuts/KeyNotation.h"
#include "shortcuts/ShortcutCatalog.h"
#include "support/Translate.h"

#include <fstream>
#include <map>
#include <set>

namespace orbisk {
namespace {

using Translations = std::map<std::string, std::string>;

// Installs a translator for one test and removes it again.
struct TranslatedAs {
    explicit TranslatedAs(Translations translations)
    {
        setTranslatorHook([translations = std::move(translations)](const char*, const char* key) {
            const auto found = translations.find(key);
            return found == translations.end() ? std::string() : found->second;
        });
    }
    ~TranslatedAs() { setTranslatorHook({}); }
};

std::vector<std::string> titles(const std::vector<ShortcutSection>& sections)
{
    std::vector<std::string> out;
    for (const auto& section : sections)
        out.push_back(section.title);
    return out;
}

const ShortcutSection& sectionTitled(const std::vector<ShortcutSection>& sections, std::string_view title)
{
    for (const auto& section : sections) {
        if (section.title == title)
            return section;
    }
    throw std::logic_error("no section " + std::string(title));
}

using Strings = std::vector<std::string>;

TEST(ShortcutCatalog, BlankQueriesKeepEverySection)
{
    const auto all = ShortcutCatalog::sections();
    ASSERT_EQ(all.size(), 11U);
    for (const auto* query : {"", "  ", "\t", " \t "}) {
        SCOPED_TRACE(std::string("query '") + query + "'");
        EXPECT_EQ(ShortcutCatalog::filtered(query), all);
    }
}

TEST(ShortcutCatalog, KeepsWholeSectionsByTitleAndOtherwiseOnlyTheMatchingRows)
{
    const auto all = ShortcutCatalog::sections();

    const auto trash = ShortcutCatalog::filtered("trash");
    ASSERT_EQ(titles(trash), (Strings{"Function Keys", "Files"}));
    ASSERT_EQ(trash[0].shortcuts.size(), 1U);
    EXPECT_EQ(trash[0].shortcuts[0].keys, Strings{"F8"});
    ASSERT_EQ(trash[1].shortcuts.size(), 1U);
    EXPECT_EQ(trash[1].shortcuts[0].keys, Strings{"Delete"});

    for (const auto* query : {"ask", " ASK\t", "Ctrl+K", "ctrl+k"}) {
        SCOPED_TRACE(query);
        const auto ask = ShortcutCatalog::filtered(query);
        ASSERT_EQ(titles(ask), Strings{"Ask"});
        EXPECT_EQ(ask[0], all[0]);
    }

    // "Tabs" names a section: it stays whole although most of its rows say nothing of tabs.
    const auto tabs = ShortcutCatalog::filtered("tabs");
    ASSERT_EQ(titles(tabs), Strings{"Panes and Tabs"});
    EXPECT_EQ(tabs[0], sectionTitled(all, "Panes and Tabs"));

    // Keys are searched as well as actions, and the rows keep the table's order.
    const auto escape = ShortcutCatalog::filtered("esc");
    ASSERT_EQ(titles(escape), (Strings{"Panes and Tabs", "Folder Breakdown", "Search and View"}));
    EXPECT_EQ(escape[0].shortcuts[0].keys, Strings{"Ctrl+Alt+S"}) << "found by its action";
    EXPECT_EQ(escape[1].shortcuts[0].action, "Back to the file list");
    EXPECT_EQ(escape[2].shortcuts[0].action, "Clear the filter");

    EXPECT_TRUE(ShortcutCatalog::filtered("no such command").empty());
}

TEST(ShortcutCatalog, SearchesTheTranslatedTextsIgnoringCaseAndAccents)
{
    TranslatedAs french({{"Refresh", "Actualiser le café"}, {"Files", "Fichiers"}, {"Type a name", "Tapez un nom"}});
    const auto cafe = ShortcutCatalog::filtered("CAFE");
    ASSERT_EQ(titles(cafe), Strings{"Panes and Tabs"});
    ASSERT_EQ(cafe[0].shortcuts.size(), 1U);
    EXPECT_EQ(cafe[0].shortcuts[0].keys, Strings{"Ctrl+R"});

    const auto files = ShortcutCatalog::filtered("fichiers");
    ASSERT_EQ(titles(files), Strings{"Fichiers"});
    EXPECT_EQ(files[0].shortcuts.size(), 15U);

    const auto typed = ShortcutCatalog::filtered("tapez");
    ASSERT_EQ(titles(typed), Strings{"Navigation"});
    EXPECT_EQ(typed[0].shortcuts[0].keys, Strings{"Tapez un nom"}) << "the worded key is translated and searched";
    EXPECT_TRUE(ShortcutCatalog::filtered("refresh").empty()) << "the English text is gone";
}

TEST(ShortcutCatalog, WritesMarkdownThatStartsWithTheTitleAndEndsWithTheQuitRow)
{
    const auto text = ShortcutCatalog::markdown();
    EXPECT_TRUE(text.starts_with("# Orbisk Keyboard Shortcuts\n\n<!-- Generated from ShortcutCatalog: "));
    EXPECT_TRUE(text.ends_with("\n## App and Windows\n\n| Keys | Action |\n| --- | --- |\n| `Ctrl+,` | Settings |\n"
                               "| `Ctrl+?` | Keyboard shortcuts |\n| `Ctrl+0` | Main window |\n"
                               "| `Ctrl+Shift+W` | Close window |\n| `Ctrl+Q` | Quit |\n"));
    EXPECT_FALSE(text.ends_with("\n\n"));
    EXPECT_NE(text.find("\n| `Ctrl+Z` / `Ctrl+Shift+Z` | Undo / redo the last file operation |\n"), std::string::npos);
    EXPECT_NE(text.find("\n| `Ctrl+1 … Ctrl+9` | Go to favorite 1–9 |\n"), std::string::npos);
    EXPECT_NE(text.find("(F1 or Ctrl+?)"), std::string::npos) << "the help keys come from the table";
}

TEST(ShortcutCatalog, EscapesBarsInActionsButNotInKeys)
{
    TranslatedAs barred({{"Quit", "Quit | Exit"}, {"Double-click", "Double|click"}});
    const auto text = ShortcutCatalog::markdown();
    EXPECT_TRUE(text.ends_with("| `Ctrl+Q` | Quit \\| Exit |\n"));
    EXPECT_NE(text.find("| `Enter` / `Double|click` | Open folder"), std::string::npos);
}

TEST(ShortcutCatalog, CommittedDocumentIsUpToDate)
{
    std::ifstream file(ORBISK_SOURCE_DIR "/docs/SHORTCUTS.md", std::ios::binary);
    ASSERT_TRUE(file) << "docs/SHORTCUTS.md is missing";
    const std::string committed((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_EQ(committed, ShortcutCatalog::markdown())
        << "docs/SHORTCUTS.md differs from the shortcut table; regenerate it with\n"
           "  build/bin/orbisk-cli shortcuts > docs/SHORTCUTS.md";
}

TEST(ShortcutCatalog, GivesEveryCommandOneMeaningAndKeysTheAppCanBind)
{
    std::map<ShortcutCommand, std::set<std::string>> actions;
    std::map<ShortcutCommand, std::set<std::string>> boundKeys;
    for (const auto& section : ShortcutCatalog::sections()) {
        for (const auto& shortcut : section.shortcuts) {
            SCOPED_TRACE(shortcut.action);
            EXPECT_FALSE(shortcut.bindings.empty()) << "every row names the commands it stands for";
            EXPECT_FALSE(shortcut.keys.empty());
            for (const auto& binding : shortcut.bindings) {
                if (shortcut.scope != ShortcutScope::application)
                    actions[binding.command].insert(shortcut.action);
                if (binding.key.empty())
                    continue;
                EXPECT_TRUE(KeyNotation::isCanonical(binding.key)) << binding.key;
                EXPECT_TRUE(boundKeys[binding.command].insert(binding.key).second) << "bound twice: " << binding.key;
            }
        }
    }
    for (int i = 0; i < shortcutCommandCount; ++i) {
        const auto command = static_cast<ShortcutCommand>(i);
        SCOPED_TRACE("command " + std::to_string(i));
        EXPECT_TRUE(actions.contains(command) || boundKeys.contains(command)) << "a command without a row";
        EXPECT_LE(actions[command].size(), 1U) << "one command, one meaning";
    }
    EXPECT_EQ(ShortcutCatalog::keys(ShortcutCommand::newFolder), (Strings{"F7", "Ctrl+Shift+N"}));
    EXPECT_EQ(ShortcutCatalog::keys(ShortcutCommand::moveToTrash), (Strings{"F8", "Del"}));
    EXPECT_EQ(ShortcutCatalog::keys(ShortcutCommand::quit), (Strings{"F10", "Ctrl+Q"}));
    EXPECT_EQ(ShortcutCatalog::keys(ShortcutCommand::goToFavorite9), Strings{"Ctrl+9"});
    EXPECT_TRUE(ShortcutCatalog::keys(ShortcutCommand::jumpToTypedName).empty());
}

TEST(ShortcutCatalog, NoTwoCommandsShareAKeyWhereTheyAreActiveTogether)
{
    using enum ShortcutScope;
    const std::vector<std::pair<const char*, std::set<ShortcutScope>>> activeTogether = {
        {"main window", {mainWindow, fileList, application}},
        {"folder breakdown", {folderBreakdown, application}},
        {"viewer and editor", {textWindow, application}},
    };
    const auto all = ShortcutCatalog::sections();
    for (const auto& [where, scopes] : activeTogether) {
        SCOPED_TRACE(where);
        std::map<std::string, ShortcutCommand> owners;
        for (const auto& section : all) {
            for (const auto& shortcut : section.shortcuts) {
                if (!scopes.contains(shortcut.scope))
                    continue;
                for (const auto& binding : shortcut.bindings) {
                    if (binding.key.empty())
                        continue;
                    const auto [owner, added] = owners.emplace(binding.key, binding.command);
                    EXPECT_TRUE(added || owner->second == binding.command) << binding.key << " does two things";
                }
            }
        }
        EXPECT_GT(owners.size(), 5U);
    }
}

TEST(KeyNotation, ShowsPortableKeysInLinuxNotationAndKnowsQtsOrder)
{
    const std::vector<std::pair<const char*, const char*>> shown = {
        {"Ctrl+Shift+N", "Ctrl+Shift+N"},
        {"Alt+Up", "Alt+↑"},
        {"Return", "Enter"},
        {"Del", "Delete"},
        {"Ctrl++", "Ctrl++"},
        {"Upper", "Upper"},
    };
    for (const auto& [portable, expected] : shown)
        EXPECT_EQ(KeyNotation::displayed(portable), expected) << portable;

    for (const auto* good : {"F5", "Ctrl+Alt+Shift+Meta+X", "Ctrl++", "Alt+Shift+Return", "Ctrl+,"})
        EXPECT_TRUE(KeyNotation::isCanonical(good)) << good;
    for (const auto* bad : {"", "Shift+Ctrl+N", "Ctrl+Ctrl+N", "Ctrl+", "Ctrl", "Control+N", "Ctrl+Shift"})
        EXPECT_FALSE(KeyNotation::isCanonical(bad)) << bad;
}

} // namespace
} // namespace orbisk
