// Filtering a whole listing from its prepared name forms must answer exactly as matching each name.
#include <gtest/gtest.h>

#include "files/NameFilter.h"
#include "files/NameForms.h"

#include <algorithm>
#include <memory>
#include <random>
#include <stdexcept>

namespace orbisk {
namespace {

std::vector<FileItem> listingOf(const std::vector<std::string>& names)
{
    auto folder = std::make_shared<const std::string>("/folder");
    std::vector<FileItem> items;
    for (const auto& name : names)
        items.emplace_back(folder, name);
    return items;
}

// Names where a prepared form could differ from the name matched afresh.
const std::vector<std::string> awkwardNames = {
    "photo.JPG",
    "Caf\xC3\xA9.pdf",   // precomposed é
    "Cafe\xCC\x81.pdf",  // e + combining acute
    "caf\xE9.txt",       // Latin-1 byte, not UTF-8
    "CAF\xE9.TXT",       // the same byte beside uppercase letters
    "x\xF0\x9F\x83\xA9", // U+1F0E9: its trail surrogate is U+DCE9
    "Stra\xC3\x9F"
    "e",                                                // ß folds to "ss"
    "\xCE\x9F\xCE\x94\xCE\x9F\xCE\xA3",                 // ΟΔΟΣ: final sigma when lowercased
    "\xD7\xA9\xD7\x81\xD7\x9C\xD7\x95\xD6\xB9\xD7\x9D", // Hebrew with points
    "a\r\nb",                                           // ASCII, but CR LF is one character
    "a\rb",
    "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9.png", // joined emoji: one character of five code points
    "\xC3\x89T\xC3\x89.jpg",                            // ÉTÉ
    "",
    "plain",
};

TEST(NameForms, FilteringAListingAgreesWithMatchingEachName)
{
    const auto listing = listingOf(awkwardNames);
    const NameForms forms(listing);
    ASSERT_EQ(forms.size(), listing.size());
    const std::vector<std::pair<std::string, std::vector<std::uint32_t>>> filters = {
        {"", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}},
        {"cafe", {1, 2}},
        {"\xE9", {3, 4}}, // the byte itself, never half of a character beyond the first plane
        {"strasse", {6}},
        {"\xCF\x82", {7}}, // ς finds the folded Σ
        {"\xD7\xA9\xD7\x9C", {8}},
        {"\xCC\x81", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}}, // only a mark: folding leaves nothing
        {"*.pdf", {1, 2}},
        {"caf\xC3\xA9*", {1, 2}},
        {"caf?.txt", {3, 4}},
        {"?", {}},
        {"a?b", {9, 10}},
        {"a??b", {}},
        {"*\xCE\xA3", {7}},
        {"?.png", {11}},
        {"\xC3\xA9t\xC3\xA9*", {12}},
        {"*.jpg;*.png", {0, 11, 12}},
        {"*", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}},
        {"p*", {0, 14}},
    };
    for (const auto& [text, expected] : filters) {
        SCOPED_TRACE("filter '" + text + "'");
        const NameFilter filter(text);
        std::vector<std::uint32_t> oneByOne;
        for (std::uint32_t i = 0; i < listing.size(); ++i) {
            if (filter.matches(listing[i].name()))
                oneByOne.push_back(i);
        }
        EXPECT_EQ(filter.passing(listing, forms), oneByOne);
        EXPECT_EQ(oneByOne, expected);
    }
}

TEST(NameForms, PrepareOnlyNamesThatAreNotPlainAsciiAndKeepEachNamesOwnForm)
{
    const auto listing = listingOf(awkwardNames);
    const NameForms forms(listing);
    for (std::size_t i = 0; i < listing.size(); ++i) {
        SCOPED_TRACE(listing[i].name());
        const bool plain = std::ranges::none_of(
            listing[i].name(), [](char c) { return c == '\r' || static_cast<unsigned char>(c) >= 0x80; });
        EXPECT_EQ(forms.isPrepared(i), !plain);
        if (plain)
            continue;
        std::u16string text;
        std::vector<std::uint32_t> bounds;
        WildcardPattern::prepare(listing[i].name(), false, text, bounds);
        const auto prepared = forms.wildcardForm(i);
        EXPECT_EQ(prepared.text, text);
        EXPECT_TRUE(std::ranges::equal(prepared.bounds, bounds));
    }
    EXPECT_EQ(forms.searchForm(2), u"cafe.pdf");
    EXPECT_EQ(forms.searchForm(6), u"strasse");
    EXPECT_EQ(forms.wildcardForm(7).text, u"\u03BF\u03B4\u03BF\u03C3") << "final sigma taken as sigma";
    EXPECT_EQ(forms.wildcardForm(11).bounds.size(), 6u) << "the joined emoji is one character, then \".png\"";
    EXPECT_THROW((void)forms.searchForm(0), std::invalid_argument);
    EXPECT_THROW((void)NameFilter("x").passing(listingOf({"a", "b"}), forms), std::invalid_argument);
}

// Random names from a small alphabet of troublesome pieces, against patterns and plain texts made
// of the same pieces: the prepared route must never disagree with the direct one.
TEST(NameForms, AgreesWithMatchingEachNameOnRandomNames)
{
    const std::vector<std::string> pieces = {
        "a",        "B",        "\xC3\xA9",         "e\xCC\x81",    "\xC3\x89",         "\xE9",     "\xFF", "\r", "\n",
        "\xCE\xA3", "\xCF\x82", "\xF0\x9F\x83\xA9", "\xE2\x80\x8D", "\xF0\x9F\x91\xA8", "\xC3\x9F", "s",    ".",
    };
    std::mt19937 random(4242);
    const auto draw = [&](int most, const std::vector<std::string>& extra) {
        std::string text;
        const int length = std::uniform_int_distribution(0, most)(random);
        for (int i = 0; i < length; ++i) {
            const auto k = std::uniform_int_distribution<std::size_t>(0, pieces.size() + extra.size() - 1)(random);
            text += k < pieces.size() ? pieces[k] : extra[k - pieces.size()];
        }
        return text;
    };
    std::vector<std::string> names;
    for (int i = 0; i < 400; ++i)
        names.push_back(draw(6, {}));
    const auto listing = listingOf(names);
    const NameForms forms(listing);
    for (int i = 0; i < 300; ++i) {
        const auto text = draw(3, i % 2 ? std::vector<std::string>{"*", "?"} : std::vector<std::string>{});
        SCOPED_TRACE("filter '" + text + "'");
        const NameFilter filter(text);
        std::vector<std::uint32_t> oneByOne;
        for (std::uint32_t k = 0; k < listing.size(); ++k) {
            if (filter.matches(listing[k].name()))
                oneByOne.push_back(k);
        }
        ASSERT_EQ(filter.passing(listing, forms), oneByOne);
    }
}

} // namespace
} // namespace orbisk
