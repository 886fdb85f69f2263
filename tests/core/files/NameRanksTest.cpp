#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "files/FileSorter.h"
#include "files/NameCollator.h"
#include "files/NameRanks.h"

namespace orbisk {
namespace {

FileItem entry(const std::string& name, bool isFolder, std::int64_t size, std::int64_t seconds)
{
    FileItem item{std::filesystem::path("/d") / name};
    item.isDirectory = isFolder;
    if (!isFolder)
        item.size = size;
    item.modificationDate = FileItem::Date(std::chrono::seconds(seconds));
    return item;
}

/// A listing with the names that make collation hard: numbers, case, accents composed and not,
/// bytes that are not UTF-8, and repeated sizes and dates so that the tie-break by name matters.
std::vector<FileItem> awkwardListing()
{
    std::mt19937 random(2024);
    const std::vector<std::string> stems{"Report",
                                         "report",
                                         "IMG_",
                                         "\xC3\x9C"
                                         "bersicht",
                                         "x\xFF",
                                         "caf\xC3\xA9",
                                         "cafe\xCC\x81",
                                         "\xC3\xA4pple",
                                         "zebra",
                                         "notes.txt"};
    std::vector<FileItem> items;
    for (int i = 0; i < 400; ++i) {
        const auto name = stems[random() % stems.size()] + std::to_string(random() % 60) + "." + std::to_string(i % 5);
        items.push_back(entry(name, i % 9 == 0, random() % 4, random() % 3));
    }
    items.push_back(entry("caf\xC3\xA9", false, 1, 1)); // two canonically equivalent names
    items.push_back(entry("cafe\xCC\x81", false, 1, 1));
    return items;
}

const KindDescriber describe = [](const FileItem& item) -> std::string {
    if (item.isDirectory)
        return "Folder";
    return item.typeExtension() == "txt" ? "text" : "Document " + std::string(item.typeExtension());
};

/// The items of listing at positions, in the order given.
std::vector<FileItem> at(const std::vector<FileItem>& listing, const std::vector<std::uint32_t>& positions)
{
    std::vector<FileItem> items;
    for (const auto position : positions)
        items.push_back(listing.at(position));
    return items;
}

TEST(NameRanks, OrderNamesAsTheCollatorDoesAndTieOnlyEquivalentOnes)
{
    const std::vector<FileItem> items{entry("file10", false, 0, 0),      entry("File2", false, 0, 0),
                                      entry("caf\xC3\xA9", false, 0, 0), entry("cafe\xCC\x81", false, 0, 0),
                                      entry("Read", false, 0, 0),        entry("read", false, 0, 0),
                                      entry("caf\xE9", false, 0, 0),     entry("file10", false, 0, 0)};
    const NameRanks ranks(items);
    ASSERT_EQ(ranks.size(), items.size());
    EXPECT_EQ(ranks[2], ranks[3]) << "composed and decomposed accents";
    EXPECT_EQ(ranks[0], ranks[7]) << "the same name twice";

    NameCollator collator;
    for (std::size_t a = 0; a < items.size(); ++a) {
        for (std::size_t b = 0; b < items.size(); ++b) {
            SCOPED_TRACE(items[a].name() + " / " + items[b].name());
            const int byCollator = collator.compareNames(items[a].name(), items[b].name());
            EXPECT_EQ(byCollator < 0, ranks[a] < ranks[b]);
            EXPECT_EQ(byCollator == 0, ranks[a] == ranks[b]);
        }
    }
}

TEST(NameRanks, OrderingPositionsGivesExactlyWhatSortingTheItemsGives)
{
    const auto listing = awkwardListing();
    // The pane sorts what its filter lets through: some positions of the listing, in listing order.
    std::vector<std::uint32_t> all(listing.size());
    std::iota(all.begin(), all.end(), 0u);
    std::vector<std::uint32_t> some;
    for (std::uint32_t i = 0; i < listing.size(); i += 3)
        some.push_back(i);
    some.push_back(static_cast<std::uint32_t>(listing.size() - 1)); // keep both equivalent names
    const FolderSizes measured{{"/d/" + listing[0].name(), 2}, {"/d/" + listing[9].name(), 7}};

    for (const std::string locale : {"", "sv"}) {
        const NameRanks ranks(listing, locale);
        NameCollator collator(locale);
        for (const auto* positions : {&all, &some}) {
            for (const auto column : {SortColumn::name, SortColumn::size, SortColumn::date, SortColumn::kind}) {
                for (const bool ascending : {true, false}) {
                    for (const bool directoriesFirst : {true, false}) {
                        SCOPED_TRACE("locale \"" + locale + "\", " + (positions == &all ? "all, " : "some, ") +
                                     std::string(rawValue(column)) + (ascending ? " up" : " down") +
                                     (directoriesFirst ? ", folders first" : ""));
                        const SortSpec spec{column, ascending};
                        const auto expected = FileSorter::sorted(at(listing, *positions), spec, directoriesFirst,
                                                                 measured, describe, locale);
                        const auto order =
                            FileSorter::order(listing, *positions, spec, directoriesFirst, measured, describe, ranks);
                        auto placed = order;
                        auto wanted = *positions;
                        std::ranges::sort(placed);
                        std::ranges::sort(wanted);
                        ASSERT_EQ(placed, wanted) << "every position exactly once";
                        // Equivalent names may come either way round; everything else must match.
                        const auto got = at(listing, order);
                        for (std::size_t i = 0; i < got.size(); ++i) {
                            if (got[i] != expected[i]) {
                                ASSERT_EQ(collator.compareNames(got[i].name(), expected[i].name()), 0)
                                    << "row " << i << ": " << got[i].name() << " instead of " << expected[i].name();
                            }
                        }
                    }
                }
            }
        }
    }
}

TEST(NameRanks, RanksOfAnotherListingAreRefused)
{
    const std::vector<FileItem> listing{entry("b", false, 0, 0), entry("a", false, 0, 0)};
    const NameRanks ranks(listing);
    const std::vector<FileItem> longer{entry("b", false, 0, 0), entry("a", false, 0, 0), entry("c", false, 0, 0)};
    EXPECT_THROW((void)FileSorter::order(longer, {0, 1, 2}, {}, true, {}, {}, ranks), std::invalid_argument);
    EXPECT_EQ(FileSorter::order(listing, {0, 1}, {}, true, {}, {}, ranks), (std::vector<std::uint32_t>{1, 0}));
    EXPECT_TRUE(FileSorter::order(listing, {}, {}, true, {}, {}, ranks).empty());
    EXPECT_EQ(NameRanks(std::vector<FileItem>{}).size(), 0u);
}

} // namespace
} // namespace orbisk
