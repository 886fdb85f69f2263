// What outlives a run (the session, favourites) and what the sidebar reads (mount table, recents).
#include "PaneHarness.h"
#include "panes/SessionState.h"
#include "places/Favorites.h"
#include "places/RecentLocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orbisk::test {
namespace {

using ::testing::ElementsAre;

TEST(SessionTest, RoundTripKeepsTabsSortsSideAndDivider)
{
    SessionState state;
    state.left.tabs = {{"/home/u", {SortColumn::size, false}}, {"/tmp/a b", {SortColumn::kind, true}}};
    state.left.activeTab = 1;
    state.right.tabs = {{"/", {SortColumn::date, false}}};
    state.activeIsRight = true;
    state.dividerRatio = 0.3;

    const auto decoded = SessionCoding::decode(SessionCoding::encode(state));
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->left.tabs.size(), 2u);
    EXPECT_EQ(decoded->left.tabs[1].path, "/tmp/a b");
    EXPECT_EQ(decoded->left.tabs[0].sort, (SortSpec{SortColumn::size, false}));
    EXPECT_EQ(decoded->left.activeTab, 1);
    EXPECT_EQ(decoded->right.tabs[0].sort, (SortSpec{SortColumn::date, false}));
    EXPECT_TRUE(decoded->activeIsRight);
    EXPECT_DOUBLE_EQ(decoded->dividerRatio, 0.3);

    // A folder whose name is not UTF-8 cannot be written as JSON text; its parent is kept instead.
    state.right.tabs = {{std::string("/tmp/caf\xE9/inner"), {}}};
    const auto withBytes = SessionCoding::decode(SessionCoding::encode(state));
    ASSERT_TRUE(withBytes);
    EXPECT_EQ(withBytes->right.tabs[0].path, "/tmp");
}

TEST(SessionTest, UndecodableSessionsAreIgnored)
{
    const std::string good =
        R"({"left":{"tabs":[{"path":"/a","sort":{"column":"name","ascending":true}}],"activeTab":0},)"
        R"("right":{"tabs":[{"path":"/b","sort":{"column":"size","ascending":false}}],"activeTab":0},)"
        R"("activeIsRight":false,"dividerRatio":0.5})";
    ASSERT_TRUE(SessionCoding::decode(good));
    const auto broken = [&](std::string_view from, std::string_view to) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        return text;
    };
    const std::string cases[] = {
        "",
        "not json",
        "[]",
        good.substr(0, good.size() - 1),
        broken(R"("column":"size")", R"("column":"type")"),
        broken(R"("ascending":true)", R"("ascending":1)"),
        broken(R"("path":"/a")", R"("path":"relative")"),
        broken(R"("path":"/a")", R"("path":7)"),
        broken(R"("activeIsRight":false)", R"("activeIsRight":"no")"),
        broken(R"("tabs":[{"path":"/b","sort":{"column":"size","ascending":false}}])", R"("tabs":[])"),
        broken(R"(,"dividerRatio":0.5)", ""),
    };
    for (const auto& text : cases) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(SessionCoding::decode(text));
    }
    const auto outOfRange =
        SessionCoding::decode(broken(R"("activeTab":0},"activeIsRight")", R"("activeTab":5},"activeIsRight")"));
    ASSERT_TRUE(outOfRange);
    EXPECT_EQ(outOfRange->right.activeTab, 0);
}

TEST(SessionTest, PaneRestoresTabsLazily)
{
    PaneHarness h;
    h.tree().folder("first");
    h.tree().file("second/file");
    PaneSession session{{{h.tree() / "first", {SortColumn::date, false}}, {h.tree() / "second", {}}}, 1};
    h.pane().restore(session);
    ASSERT_TRUE(h.settle());
    EXPECT_EQ(h.pane().directory(), h.tree() / "second");
    EXPECT_THAT(h.names(), ElementsAre("..", "file"));
    EXPECT_FALSE(h.pane().tabs()[0]->hasLoaded) << "a tab lists its folder only when first shown";
    EXPECT_TRUE(h.pane().tabs()[1]->hasLoaded);
    const auto saved = h.pane().session();
    ASSERT_EQ(saved.tabs.size(), 2u);
    EXPECT_EQ(saved.tabs[0].sort, (SortSpec{SortColumn::date, false}));
    EXPECT_EQ(saved.activeTab, 1);
}

TEST(PlacesTest, FavoritesAndRecentKeepOrderWithoutRepeats)
{
    Favorites::List list;
    list = Favorites::added(list, "/a");
    list = Favorites::added(list, "/b");
    list = Favorites::added(list, "/a");
    list = Favorites::added(list, std::string("/caf\xE9"));
    EXPECT_THAT(list, ElementsAre("/a", "/b", std::string("/caf\xE9")));
    EXPECT_THAT(Favorites::moved(list, 2, 0), ElementsAre(std::string("/caf\xE9"), "/a", "/b"));
    EXPECT_THAT(Favorites::moved(list, 0, 99), ElementsAre("/b", std::string("/caf\xE9"), "/a"));
    EXPECT_THAT(Favorites::removed(list, "/b"), ElementsAre("/a", std::string("/caf\xE9")));

    PaneHarness h; // favourites survive in the settings file byte for byte
    h.settings().setFavoriteLocations(list);
    EXPECT_EQ(h.settings().favoriteLocations(), list);

    RecentLocations recent(3);
    for (const char* folder : {"/1", "/2", "/3", "/2", "/4"})
        recent.visit(folder);
    EXPECT_THAT(recent.folders(), ElementsAre("/4", "/2", "/3"));
}

} // namespace
} // namespace orbisk::test
