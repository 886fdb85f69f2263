#include <gtest/gtest.h>

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/FormatSpecifier.h"
#include "support/L10n.h"

namespace orbisk {
namespace {

struct PseudoLanguageOff {
    ~PseudoLanguageOff()
    {
        setPseudoLanguage(false);
        setTranslatorHook({});
        L10n::setRightToLeft(false);
    }
};

TEST(L10n, FillsTextAndIntegerPlaceholdersInOrderAndByPosition)
{
    EXPECT_EQ(L("“%@” has %lld items", "Photos", 3), "“Photos” has 3 items");
    EXPECT_EQ(L("%2$@ before %1$@", "one", "two"), "two before one");
    EXPECT_EQ(L("100%% of %@", "it"), "100% of it");
    EXPECT_EQ(L("%@ and %@", "only one"), "only one and %@") << "a missing argument leaves its specifier";
    EXPECT_EQ(L("50% off"), "50% off") << "a lone % is no specifier";
}

TEST(L10n, DropsTheContextAfterTheBarsAndUsesTheHook)
{
    PseudoLanguageOff restore;
    EXPECT_EQ(translate("Orbisk", "View||function key"), "View");
    setTranslatorHook([](const char*, const char* key) {
        return std::string_view(key) == "Folder" ? std::string("Ordner") : std::string();
    });
    EXPECT_EQ(translate("Orbisk", "Folder"), "Ordner");
    EXPECT_EQ(translate("Orbisk", "Edit||function key"), "Edit") << "no translation falls back to English";
}

TEST(L10n, PseudoLanguageMarksEveryTextButKeepsSpecifiersWorking)
{
    PseudoLanguageOff restore;
    setPseudoLanguage(true);
    const auto text = translate("Orbisk", "Copying %lld items to %@");
    EXPECT_NE(text, "Copying %lld items to %@");
    EXPECT_TRUE(text.starts_with("⟦")) << text;
    EXPECT_EQ(L(text, 2, "Docs"), "⟦Cöpyíng 2 ítéms tö Docs⟧");
}

TEST(FormatSpecifiers, RecogniseTheFullGrammar)
{
    const auto specs = findFormatSpecifiers("%1$@ %-5.2f %lld %% %zu %q");
    ASSERT_EQ(specs.size(), 5U);
    EXPECT_EQ(specs[0].position, 1);
    EXPECT_EQ(specs[0].conversion, '@');
    EXPECT_EQ(specs[1].conversion, 'f');
    EXPECT_EQ(specs[1].length, 6U);
    EXPECT_EQ(specs[2].conversion, 'd');
    EXPECT_EQ(specs[3].conversion, '%');
    EXPECT_EQ(specs[4].conversion, 'u');
}

TEST(DisplayText, ShowsEveryByteAndHidesNothing)
{
    EXPECT_EQ(DisplayText::visible("caf\xE9.txt"), "caf\\xE9.txt");
    EXPECT_EQ(DisplayText::visible("a\nb\tc"), "a\\nb\\tc");
    EXPECT_EQ(DisplayText::visible("evil\u202Etxt.exe"), "evil\\u{202E}txt.exe");
    EXPECT_EQ(DisplayText::visible("zero\u200Bwidth"), "zero\\u{200B}width");
    EXPECT_EQ(DisplayText::visible("👨‍👩‍👧 family"), "👨‍👩‍👧 family")
        << "joiners inside emoji stay";
    EXPECT_EQ(DisplayText::visible("\xF0\x9F"), "\\xF0\\x9F") << "a truncated sequence shows each byte";
}

TEST(DisplayText, IsolatesOnlyWhatCouldReorderTheLine)
{
    const std::string lri = "\u2066", fsi = "\u2068", pdi = "\u2069";
    EXPECT_EQ(DisplayText::isolatedArgument("report.pdf", false), "report.pdf");
    EXPECT_EQ(DisplayText::isolatedArgument("report.pdf", true), fsi + "report.pdf" + pdi);
    EXPECT_EQ(DisplayText::isolatedArgument("שלום.txt", false), fsi + "שלום.txt" + pdi);
    EXPECT_EQ(DisplayText::isolatedArgument("/home/שלום/עולם", false),
              lri + "/home/" + fsi + "שלום" + pdi + "/" + fsi + "עולם" + pdi + pdi);
    EXPECT_EQ(DisplayText::isolatedArgument("/a\nb", true), fsi + "/a\\nb" + pdi) << "a line break is no path";
    EXPECT_EQ(DisplayText::isolatedArgument("x\u202Ey", false), fsi + "x\\u{202E}y" + pdi);
    EXPECT_EQ(DisplayText::displayPath("/home/me", false), "/home/me");
    EXPECT_EQ(DisplayText::displayPath("/home/me", true), lri + "/home/me" + pdi);
    EXPECT_EQ(L("“%@” is gone.", "caf\xE9"), "“caf\\xE9” is gone.") << "bytes that are not UTF-8 never vanish";
}

TEST(ByteCount, UsesDecimalUnitsAsFileManagersDo)
{
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1000, "1.0 kB"},
        {1234, "1.2 kB"},
        {99'949, "99.9 kB"},
        {123'456, "123 kB"},
        {999'960, "1.0 MB"},
        {1'200'000'000, "1.2 GB"},
        {5'000'000'000'000, "5.0 TB"},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(formatByteCount(bytes), text) << bytes;
}

} // namespace
} // namespace orbisk
