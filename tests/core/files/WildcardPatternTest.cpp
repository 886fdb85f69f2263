#include <gtest/gtest.h>

#include "files/NameFilter.h"
#include "files/WildcardPattern.h"

#include <fnmatch.h>

#include <random>

namespace orbisk {
namespace {

struct Case {
    const char* pattern;
    const char* name;
    bool matches;
};

void expectAll(const std::vector<Case>& cases, bool caseSensitive)
{
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("pattern '") + c.pattern + "', name '" + c.name + "'");
        EXPECT_EQ(WildcardPattern(c.pattern, caseSensitive).matches(c.name), c.matches);
    }
}

TEST(WildcardPattern, MatchesWholeNamesWithStarsQuestionMarksAndAlternatives)
{
    expectAll(
        {
            {"*.jpg;*.png", "A.JPG", true},
            {"*.jpg;*.png", "b.png", true},
            {"*.jpg;*.png", "c.gif", false},
            {" *.jpg ; ", "photo.jpg", true},
            {"a*b*c", "aXbYc", true},
            {"a*b*c", "abc", true},
            {"a*b*c", "acb", false},
            {"*aab", "aaaab", true},
            {"?", "x", true},
            {"?", "xy", false},
            {"*", "", true},
            {"*", "anything at all", true},
            {"report", "report.pdf", false},
        },
        false);
}

TEST(WildcardPattern, TakesAStarInTheNameAsALiteralBeforeTryingTheWildcard)
{
    expectAll(
        {
            {"*", "*abc", false},
            {"*", "*", true},
            {"*c", "x*abc", true},
            {"**", "*abc", true},
        },
        false);
}

TEST(WildcardPattern, CountsUserPerceivedCharactersAndCanonicalEquivalence)
{
    expectAll(
        {
            {"?", "😀", true},
            {"?", "👍🏽", true},           // emoji with a skin-tone modifier
            {"?", "👨‍👩‍👧", true}, // joined family, five code points
            {"?", "e\xCC\x81", true},          // e + combining acute
            {"??", "e\xCC\x81", false},
            {"caf\xC3\xA9", "cafe\xCC\x81", true}, // precomposed é against decomposed é
            {"cafe*", "cafe\xCC\x81", false},      // "e" alone is not the character "é"
            {"caf\xC3\xA9", "cafe", false},        // diacritics count in patterns
            {"?\n?", "a\r\nb", false},             // CR LF is one character
            {"a?b", "a\r\nb", true},
            {"r?sum?", "r\xC3\xA9sum\xC3\xA9", true},
            {"\xD7\xA9\xD7\x9C*", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.txt", true}, // Hebrew, logical order
        },
        false);
}

TEST(WildcardPattern, LowercasesFullyUnlessCaseSensitive)
{
    expectAll(
        {
            {"\xC3\x89T\xC3\x89*", "\xC3\xA9t\xC3\xA9.txt", true},   // ÉTÉ* / été.txt
            {"*\xCE\xA3", "\xCE\x9F\xCE\x94\xCE\x9F\xCE\xA3", true}, // *Σ / ΟΔΟΣ (final sigma)
            {"*\xCF\x82", "\xCE\xBF\xCE\xB4\xCE\xBF\xCF\x83", true}, // *ς / οδοσ
        },
        false);
    expectAll(
        {
            {"*.JPG", "a.jpg", false},
            {"*.JPG", "a.JPG", true},
            {"\xC3\x89*", "\xC3\xA9t\xC3\xA9", false},
            {"\xC3\x89*", "E\xCC\x81t\xC3\xA9", true}, // case kept, equivalence still applies
        },
        true);
}

TEST(WildcardPattern, ComparesBytesThatAreNotUtf8AsThemselves)
{
    expectAll(
        {
            {"caf\xE9*", "caf\xE9.txt", true},
            {"caf?.txt", "caf\xE9.txt", true},
            {"caf\xE9", "caf\xC3\xA9", false},
            {"CAF\xE9", "caf\xE9", true},
            {"?", "\xFF", true},
        },
        false);
}

TEST(WildcardPattern, SplitsAtSemicolonsAndDropsBlankPieces)
{
    const std::vector<std::pair<const char*, std::size_t>> texts = {
        {"", 0}, {";;", 0}, {" ; \t;", 0}, {"*.a", 1}, {";*.a;;*.b ;", 2}, {"a b;c", 2},
    };
    for (const auto& [text, count] : texts) {
        SCOPED_TRACE(text);
        const WildcardPattern pattern(text, false);
        EXPECT_EQ(pattern.size(), count);
        EXPECT_EQ(pattern.isEmpty(), count == 0);
        if (pattern.isEmpty()) {
            EXPECT_FALSE(pattern.matches(""));
            EXPECT_FALSE(pattern.matches("anything"));
        }
    }
    EXPECT_TRUE(WildcardPattern("a b", false).matches("a b")) << "inner blanks stay";
    EXPECT_EQ(WildcardPattern(" *.jpg ; ", false), WildcardPattern("*.jpg", false));
    EXPECT_NE(WildcardPattern("*.jpg", false), WildcardPattern("*.jpg", true));
    EXPECT_TRUE(WildcardPattern::containsWildcards("a?"));
    EXPECT_FALSE(WildcardPattern::containsWildcards("plain;text"));
}

// For names without "*" the greedy scan must agree with the C library's matcher.
TEST(WildcardPattern, AgreesWithFnmatchOnRandomPatternsOverNamesWithoutStars)
{
    std::mt19937 random(20240607);
    const auto draw = [&](std::string_view alphabet, int maximum) {
        std::string text(std::uniform_int_distribution(0, maximum)(random), ' ');
        for (auto& c : text)
            c = alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(random)];
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const auto pattern = draw("ab*?", 6);
        const auto name = draw("ab?", 7);
        if (pattern.find_first_not_of(" ") == std::string::npos)
            continue;
        SCOPED_TRACE("pattern '" + pattern + "', name '" + name + "'");
        ASSERT_EQ(WildcardPattern(pattern, true).matches(name), ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0);
    }
}

TEST(NameFilter, FindsPlainTextAnywhereIgnoringCaseAndDiacritics)
{
    const std::vector<Case> cases = {
        {"", "anything", true},
        {"rep", "Report.pdf", true},
        {"rep", "prepare.txt", true},
        {"txt", "notes.TXT", true},
        {"cafe", "Caf\xC3\xA9.txt", true},
        {"r\xC3\xA9sum\xC3\xA9", "Resume.doc", true},
        {"resume", "R\xC3\xA9sume\xCC\x81.doc", true}, // decomposed accent in the name
        {"\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\xD7\xA9\xD7\x81\xD7\x9C\xD7\x95\xD6\xB9\xD7\x9D.txt",
         true}, // Hebrew points
        {"strasse",
         "Stra\xC3\x9F"
         "e.txt",
         true},
        {"a ", "a.txt", false}, // not trimmed
        {"a ", "a b.txt", true},
        {"caf\xE9", "CAF\xE9.txt", true},   // invalid byte as itself
        {"\xC3\xA9t\xC3\xA9", "ETE", true}, // non-ASCII text against an ASCII name
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("filter '") + c.pattern + "', name '" + c.name + "'");
        EXPECT_EQ(NameFilter(c.pattern).matches(c.name), c.matches);
    }
}

TEST(NameFilter, UsesACaseInsensitivePatternWhenTheTextHoldsAWildcard)
{
    const std::vector<Case> cases = {
        {"rep*", "Report.pdf", true},
        {"rep*", "prepare.txt", false},
        {"r?sum?", "r\xC3\xA9sum\xC3\xA9", true},
        {"r?sum?", "resume", true},
        {"r?sum?", "resume.doc", false},
        {"caf\xC3\xA9*", "cafe.txt", false}, // patterns do not ignore diacritics
        {"*.JPG;*.png", "a.jpg", true},
        {" *.jpg", "a.jpg", true}, // the pattern builder trims its pieces
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string("filter '") + c.pattern + "', name '" + c.name + "'");
        const NameFilter filter(c.pattern);
        EXPECT_EQ(filter.matches(c.name), c.matches);
    }
    EXPECT_FALSE(NameFilter("plain").pattern().has_value());
    ASSERT_TRUE(NameFilter("a*").pattern().has_value());
}

} // namespace
} // namespace orbisk
