// Rows as positions into a listing: reading them, keeping the listing alive, and a pane's rows
// following a reload whose names differ.
#include "PaneHarness.h"

#include "panes/PaneRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace orbisk::test {
namespace {

using ::testing::ElementsAre;

std::shared_ptr<const PaneRows::Listing> listingOf(std::vector<std::string> names)
{
    auto folder = std::make_shared<const std::string>("/some/folder");
    auto listing = std::make_shared<PaneRows::Listing>();
    for (auto& name : names)
        listing->emplace_back(folder, std::move(name));
    return listing;
}

std::vector<std::string> namesOf(const PaneRows& rows)
{
    std::vector<std::string> names;
    for (const auto& item : rows)
        names.push_back(item.name());
    return names;
}

TEST(PaneRowsTest, ReadAsTheListingAtTheirPositionsWithTheParentRowOnTop)
{
    const auto listing = listingOf({"a", "b", "c", "d"});
    struct Case {
        std::vector<std::uint32_t> positions;
        bool parent;
        std::vector<std::string> names;
    };
    const std::vector<Case> cases = {
        {{2, 0, 3}, false, {"c", "a", "d"}},
        {{2, 0, 3}, true, {"..", "c", "a", "d"}},
        {{}, true, {".."}},
        {{}, false, {}},
        {{3, 3}, false, {"d", "d"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.positions) + (c.parent ? " with .." : ""));
        const PaneRows rows(listing, c.positions,
                            c.parent ? std::optional(FileItem::parentLink("/some/folder")) : std::nullopt);
        ASSERT_EQ(rows.size(), c.names.size());
        EXPECT_EQ(rows.empty(), c.names.empty());
        EXPECT_EQ(namesOf(rows), c.names) << "iterating and indexing must agree";
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i].name(), c.names[i]);
            EXPECT_EQ(rows[i].isParentLink, c.parent && i == 0);
        }
        if (c.parent) {
            EXPECT_EQ(rows.front().url(), "/some");
        }
    }
    EXPECT_TRUE(PaneRows().empty());
    EXPECT_THROW(PaneRows(listing, {0, 4}, std::nullopt), std::out_of_range);
    EXPECT_THROW(PaneRows(nullptr, {0}, std::nullopt), std::out_of_range);
}

TEST(PaneRowsTest, KeepTheirListingWhenThePaneReadsTheFolderAgain)
{
    const std::string apple = "\xC3\x84pfel";   // Äpfel
    const std::string banana = "Ban\xC3\xA4ne"; // Banäne
    const std::string cream = "Cre\xCC\x80me";  // Crème, with a combining grave
    const std::string latin1 = "d\xE9j\xE0";    // déjà in Latin-1, not UTF-8
    PaneHarness h;
    h.settings().setWatchDirectories(false);
    h.tree().file(apple);
    h.tree().file(banana, "12345");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree().root()));
    pane.filterChanged("*n?ne");
    EXPECT_THAT(h.names(), ElementsAre("..", banana));
    pane.filterChanged("");
    const PaneRows before = pane.rows();
    const auto* listingBefore = pane.activeTab().listing.get();

    // Same number of names, other names: nothing made from the old ones may be used again.
    std::filesystem::rename(h.tree() / banana, h.tree() / cream);
    std::filesystem::remove(h.tree() / apple);
    h.tree().file(latin1);
    pane.reload();
    ASSERT_TRUE(h.settle());
    EXPECT_NE(pane.activeTab().listing.get(), listingBefore) << "a reload makes a new listing";
    EXPECT_THAT(namesOf(before), ElementsAre("..", apple, banana)) << "old rows still read their own items";
    EXPECT_THAT(h.names(), ElementsAre("..", cream, latin1));

    const std::vector<std::pair<std::string, std::vector<std::string>>> filters = {
        {"*n?ne", {".."}},          {"ban", {".."}},
        {"creme", {"..", cream}},   {"CR\xC3\x88*", {"..", cream}}, // a precomposed È against the combining grave
        {"*\xE9*", {"..", latin1}}, {"\xE9j", {"..", latin1}},
    };
    for (const auto& [filter, names] : filters) {
        SCOPED_TRACE("filter '" + filter + "'");
        pane.filterChanged(filter);
        EXPECT_EQ(h.names(), names);
    }
    pane.filterChanged("*e*");
    pane.setSort({SortColumn::size, false});
    EXPECT_EQ(h.names().at(1), cream);
    pane.selectAll();
    EXPECT_EQ(pane.statusText(), "1 of 1 selected, 5 bytes (filtered from 2)");
    pane.setSelectionFromView({1}, 1);
    ASSERT_TRUE(pane.focusedItem());
    EXPECT_EQ(pane.focusedItem()->url(), h.tree() / cream);
}

} // namespace
} // namespace orbisk::test
