#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "files/FileSorter.h"
#include "files/NameCollator.h"

namespace orbisk {
namespace {

using Names = std::vector<std::string>;

FileItem file(const std::string& name, std::optional<std::int64_t> size = 0,
              std::optional<std::int64_t> seconds = 1'000)
{
    FileItem item{std::filesystem::path("/d") / name};
    item.size = size;
    if (seconds)
        item.modificationDate = FileItem::Date(std::chrono::seconds(*seconds));
    return item;
}

FileItem folder(const std::string& name)
{
    FileItem item = file(name, std::nullopt);
    item.isDirectory = true;
    return item;
}

Names namesOf(const std::vector<FileItem>& items)
{
    Names names;
    for (const auto& item : items)
        names.push_back(item.name());
    return names;
}

Names sortedNames(std::vector<FileItem> items, SortColumn column, bool ascending, bool directoriesFirst = true,
                  const FolderSizes& sizes = {}, const KindDescriber& describe = {})
{
    return namesOf(FileSorter::sorted(std::move(items), {column, ascending}, directoriesFirst, sizes, describe));
}

TEST(FileSorter, OrdersNamesByNumberValueIgnoringCase)
{
    const std::vector<FileItem> items{file("a10"),   file("a2"), file("A1"), file("file10"),
                                      file("file2"), file("B"),  file("b1")};
    EXPECT_EQ(sortedNames(items, SortColumn::name, true), (Names{"A1", "a2", "a10", "B", "b1", "file2", "file10"}));
    EXPECT_EQ(sortedNames(items, SortColumn::name, false), (Names{"file10", "file2", "b1", "B", "a10", "a2", "A1"}));
}

TEST(FileSorter, KeepsFoldersFirstInBothDirectionsOnlyWhenAsked)
{
    const std::vector<FileItem> items{file("apple"), folder("Zoo"), file("zebra"), folder("art"), file("Mango")};
    EXPECT_EQ(sortedNames(items, SortColumn::name, true), (Names{"art", "Zoo", "apple", "Mango", "zebra"}));
    EXPECT_EQ(sortedNames(items, SortColumn::name, false), (Names{"Zoo", "art", "zebra", "Mango", "apple"}));
    EXPECT_EQ(sortedNames(items, SortColumn::name, true, false), (Names{"apple", "art", "Mango", "zebra", "Zoo"}));

    auto package = file("Bundle.app", 10);
    package.isPackage = true;
    EXPECT_EQ(sortedNames({file("a"), package, folder("z")}, SortColumn::name, true), (Names{"z", "a", "Bundle.app"}))
        << "a package sorts among the files";
}

TEST(FileSorter, SortsUnknownSizesAndDatesFirst)
{
    const std::vector<FileItem> items{file("empty", 0), folder("dir"), file("big", 5000), file("b", 10), file("a", 10)};
    EXPECT_EQ(sortedNames(items, SortColumn::size, true, false), (Names{"dir", "empty", "a", "b", "big"}));
    EXPECT_EQ(sortedNames(items, SortColumn::size, false, false), (Names{"big", "b", "a", "empty", "dir"}))
        << "equal sizes fall back to the name, in the same direction";
    const FolderSizes measured{{"/d/dir", 4096}, {"/d/big", 1}};
    EXPECT_EQ(sortedNames(items, SortColumn::size, true, false, measured), (Names{"empty", "a", "b", "dir", "big"}))
        << "a measured folder sorts by its size; a file keeps its own";

    const std::vector<FileItem> dated{file("new", 0, 3'000), file("unknown", 0, std::nullopt), file("old", 0, -5)};
    EXPECT_EQ(sortedNames(dated, SortColumn::date, true), (Names{"unknown", "old", "new"})) << "no date is oldest";
}

TEST(FileSorter, GroupsKindsAskingForEachKindOnce)
{
    std::vector<FileItem> items{file("b.TXT"), folder("photos"), file("a.txt"),
                                file("c.jpg"), folder("Music"),  file("z.txt")};
    items.push_back(file("link.txt"));
    items.back().isSymbolicLink = true;
    int calls = 0;
    const KindDescriber describe = [&](const FileItem& item) -> std::string {
        ++calls;
        if (item.isDirectory)
            return "Folder";
        const std::string base = item.typeExtension() == "jpg" ? "JPEG image" : "text";
        return item.isSymbolicLink ? base + " (link)" : base;
    };
    EXPECT_EQ(sortedNames(items, SortColumn::kind, true, false, {}, describe),
              (Names{"Music", "photos", "c.jpg", "a.txt", "b.TXT", "z.txt", "link.txt"}));
    EXPECT_EQ(calls, 4) << "folder, jpg, txt (any case), txt link";
    EXPECT_EQ(sortedNames(items, SortColumn::kind, false, false, {}, describe),
              (Names{"link.txt", "z.txt", "b.TXT", "a.txt", "c.jpg", "photos", "Music"}));
    calls = 0;
    (void)sortedNames(items, SortColumn::name, true, false, {}, describe);
    EXPECT_EQ(calls, 0) << "kinds are only worked out for the kind column";
}

TEST(NameCollator, TiesOnlyCanonicallyEquivalentNames)
{
    NameCollator collator;
    const std::string composed = "caf\xC3\xA9";    // é as one code point
    const std::string decomposed = "cafe\xCC\x81"; // e + combining acute
    EXPECT_EQ(collator.compareNames(composed, decomposed), 0);
    EXPECT_LT(collator.compareNames("cafe", composed), 0);
    EXPECT_LT(collator.compareNames(composed, "cafes"), 0) << "accents weigh less than letters";
    // Same letters in another case: not a tie, and always the same way round.
    EXPECT_LT(collator.compareNames("Read", "read"), 0);
    EXPECT_GT(collator.compareNames("read", "Read"), 0);
    // Bytes that are not UTF-8 are names too: distinct from each other and from U+FFFD.
    EXPECT_NE(collator.compareNames("caf\xE9", "caf\xE8"), 0);
    EXPECT_NE(collator.compareNames("caf\xE9", "caf\xEF\xBF\xBD"), 0);
    EXPECT_EQ(collator.compareNames("caf\xE9", "caf\xE9"), 0);
}

TEST(NameCollator, FollowsTheLocaleButNeverPlainAsciiOrder)
{
    const Names words{"zebra", "\xC3\xA4pple", "apple", "Banana"}; // äpple
    const auto sortedIn = [&](std::string_view locale) {
        NameCollator collator(locale);
        auto copy = words;
        std::ranges::sort(copy, [&](const auto& a, const auto& b) { return collator.compareNames(a, b) < 0; });
        return copy;
    };
    EXPECT_EQ(sortedIn("en"), (Names{"apple", "\xC3\xA4pple", "Banana", "zebra"}));
    EXPECT_EQ(sortedIn("sv"), (Names{"apple", "Banana", "zebra", "\xC3\xA4pple"})) << "Swedish puts ä after z";
    EXPECT_EQ(sortedIn("en_US_POSIX"), sortedIn("en")) << "the C locale must not make case count";
}

TEST(FileSorter, ReturnsEveryItemOnceInTheSameOrderWhateverTheInputOrder)
{
    std::mt19937 random(12345);
    std::vector<FileItem> items;
    const char* stems[] = {"Report",
                           "report",
                           "IMG_",
                           "\xC3\x9C"
                           "bersicht",
                           "x\xFF",
                           "notes"};
    for (int i = 0; i < 600; ++i) {
        auto name =
            std::string(stems[random() % std::size(stems)]) + std::to_string(random() % 400) + "-" + std::to_string(i);
        items.push_back(i % 7 == 0 ? folder(name) : file(name, random() % 50, random() % 5));
    }
    for (const auto column : {SortColumn::name, SortColumn::size, SortColumn::date}) {
        for (const bool ascending : {true, false}) {
            SCOPED_TRACE(std::string(rawValue(column)) + (ascending ? " ascending" : " descending"));
            const auto first = FileSorter::sorted(items, {column, ascending}, true, {}, {});
            auto shuffled = items;
            std::ranges::shuffle(shuffled, random);
            EXPECT_EQ(FileSorter::sorted(shuffled, {column, ascending}, true, {}, {}), first);

            auto expected = namesOf(items);
            auto got = namesOf(first);
            std::ranges::sort(expected);
            std::ranges::sort(got);
            EXPECT_EQ(got, expected) << "an item was lost or doubled";

            NameCollator collator;
            for (std::size_t i = 1; i < first.size(); ++i) {
                const auto& a = first[i - 1];
                const auto& b = first[i];
                ASSERT_GE(a.isDirectory, b.isDirectory) << "folders first at " << i;
                if (column == SortColumn::name && a.isDirectory == b.isDirectory) {
                    const int c = collator.compareNames(a.name(), b.name());
                    ASSERT_TRUE(ascending ? c < 0 : c > 0) << a.name() << " / " << b.name();
                }
            }
        }
    }
}

} // namespace
} // namespace orbisk
