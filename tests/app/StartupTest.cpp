// Program entry: the shortcut dump before any window, and who decides the layout direction.
#include "Startup.h"
#include "shortcuts/ShortcutCatalog.h"
#include "support/Processes.h"
#include "support/Translate.h"
#include "windows/ShortcutsDialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace orbisk::test {
namespace {

TEST(StartupTest, OnlyTheExactSwitchAsksForTheShortcutList)
{
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{"orbisk"}, false},
        {{"orbisk", "--print-shortcuts"}, true},
        {{"orbisk", "-reverse", "/tmp", "--print-shortcuts", "x"}, true},
        {{"orbisk", "--print-shortcuts=yes"}, false},
        {{"orbisk", "--Print-Shortcuts"}, false},
        {{"orbisk", "print-shortcuts"}, false},
    };
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments.back());
        EXPECT_EQ(Startup::wantsShortcutList(arguments), expected);
    }
}

TEST(StartupTest, ExplicitDirectionWinsOverTheFirstLanguage)
{
    struct Case {
        std::vector<std::string> arguments;
        std::vector<std::string> languages;
        bool rightToLeft;
    };
    const Case cases[] = {
        {{"orbisk"}, {"he-IL", "en-US"}, true},
        {{"orbisk"}, {"ar"}, true},
        {{"orbisk"}, {"en-US", "he-IL"}, false},
        {{"orbisk"}, {}, false},
        {{"orbisk", "--layout-direction=ltr"}, {"he-IL"}, false},
        {{"orbisk", "-reverse"}, {"en-GB"}, true},
        {{"orbisk", "--layout-direction=rtl"}, {"de"}, true},
        {{"orbisk", "-reverse", "--layout-direction=ltr"}, {"ar"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.back() + " / " + (c.languages.empty() ? "" : c.languages.front()));
        EXPECT_EQ(Startup::decideRightToLeft(Startup::explicitRightToLeft(c.arguments), c.languages), c.rightToLeft);
    }
}

TEST(StartupTest, CoreTextsGoThroughQtWithoutTheirContextSuffix)
{
    Startup::installTranslatorHook();
    EXPECT_EQ(translate("Orbisk", "View||function key"), "View");
    EXPECT_EQ(translate("Orbisk", "Folder"), "Folder");
    setTranslatorHook({});
}

TEST(StartupTest, PrintShortcutsWorksWithoutADisplay)
{
    const auto program = binary("orbisk");
    if (!std::filesystem::exists(program))
        GTEST_SKIP() << "orbisk is not built";
    // No display and an unusable platform plugin: the switch must act before Qt starts.
    const auto result = run({program.native(), "--ignored", "--print-shortcuts"}, {},
                            {"DISPLAY=", "WAYLAND_DISPLAY=", "QT_QPA_PLATFORM=none-such"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, ShortcutCatalog::markdown());
    EXPECT_TRUE(result.err.empty()) << result.err;
}

TEST(ShortcutsDialogTest, SearchNarrowsTheListAndSaysWhenNothingMatches)
{
    ShortcutsDialog dialog;
    const auto all = dialog.list()->topLevelItemCount();
    EXPECT_GT(all, 70);
    dialog.searchField()->setText("trash");
    EXPECT_LT(dialog.list()->topLevelItemCount(), all);
    EXPECT_FALSE(dialog.list()->isHidden());
    bool foundF8 = false;
    for (int i = 0; i < dialog.list()->topLevelItemCount(); ++i)
        foundF8 = foundF8 || dialog.list()->topLevelItem(i)->text(0) == QStringLiteral("F8");
    EXPECT_TRUE(foundF8);

    dialog.searchField()->setText("zzzz");
    EXPECT_TRUE(dialog.list()->isHidden());
    EXPECT_FALSE(dialog.emptyNotice()->isHidden());
    EXPECT_EQ(dialog.emptyNotice()->text(), QStringLiteral("No shortcuts match “zzzz”."));
    dialog.searchField()->setText("  ");
    EXPECT_EQ(dialog.list()->topLevelItemCount(), all);
}

TEST(ShortcutsDialogTest, LongKeyListsWrapInsteadOfSqueezingTheActions)
{
    ShortcutsDialog dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* list = dialog.list();
    EXPECT_LT(list->columnWidth(0), list->viewport()->width() / 2) << "the actions keep most of the width";
    const QTreeWidgetItem* longest = nullptr;
    const QTreeWidgetItem* shortest = nullptr;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const auto* item = list->topLevelItem(i);
        if (item->text(1).isEmpty())
            continue; // a section title
        if (!longest || item->text(0).count(QLatin1Char('+')) > longest->text(0).count(QLatin1Char('+')))
            longest = item;
        if (!shortest || item->text(0).size() < shortest->text(0).size())
            shortest = item;
    }
    ASSERT_TRUE(longest && shortest);
    SCOPED_TRACE(longest->text(0).toStdString());
    EXPECT_GT(list->visualItemRect(longest).height(), list->visualItemRect(shortest).height())
        << "a long list of keys takes more than one line";
}

} // namespace
} // namespace orbisk::test
