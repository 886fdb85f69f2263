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
    PaneHarness h;
    h.settings().setWatchDirectories(false);
    h.tree().file("apple");
    h.tree().file("banana", "12345");
    auto& pane = h.pane();
    ASSERT_TRUE(h.go(h.tree().root()));
    const PaneRows before = pane.rows();
    const auto* listingBefore = pane.activeTab().listing.get();

    std::filesystem::rename(h.tree() / "banana", h.tree() / "cherry");
    h.tree().file("date");
    pane.reload();
    ASSERT_TRUE(h.settle());
    EXPECT_NE(pane.activeTab().listing.get(), listingBefore) << "a reload makes a new listing";
    EXPECT_THAT(namesOf(before), ElementsAre("..", "apple", "banana")) << "old rows still read their own items";
    EXPECT_THAT(h.names(), ElementsAre("..", "apple", "cherry", "date"));

    // Filtering and sorting from memory work on the new names, never on the old listing's.
    pane.filterChanged("an");
    EXPECT_THAT(h.names(), ElementsAre(".."));
    pane.filterChanged("*e*");
    EXPECT_THAT(h.names(), ElementsAre("..", "apple", "cherry", "date"));
    pane.setSort({SortColumn::size, false});
    EXPECT_EQ(h.names().at(1), "cherry");
    pane.selectAll();
    EXPECT_EQ(pane.statusText(), "3 of 3 selected, 5 bytes (filtered from 3)");
    pane.setSelectionFromView({1}, 1);
    ASSERT_TRUE(pane.focusedItem());
    EXPECT_EQ(pane.focusedItem()->url(), h.tree() / "cherry");
    EXPECT_THAT(pane.selectedNames(), ElementsAre("cherry"));
}

} // namespace
} // namespace orbisk::test
