#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <set>

#include "files/DirectoryReader.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using test::TempTree;

const std::string latin1Name = "caf\xE9";

/// A folder with one entry of every awkward sort.
void populate(TempTree& tree)
{
    tree.folder(latin1Name);
    tree.folder("real");
    tree.file("five.txt", "12345");
    tree.file(".profile", "x");
    tree.file("listed", "xy");
    tree.file(".hidden", "listed\n\nnot-there\n");
    tree.link("folder-link", "real");
    tree.link("dangling", "nowhere/at/all");
    tree.fifo("pipe");
}

std::map<std::string, FileItem> byName(const std::vector<FileItem>& items)
{
    std::map<std::string, FileItem> map;
    for (const auto& item : items)
        EXPECT_TRUE(map.emplace(item.name(), item).second) << "listed twice: " << item.name();
    return map;
}

TEST(DirectoryReader, DescribesEveryKindOfEntryFromItsOwnStatAndItsLinkTarget)
{
    TempTree tree;
    populate(tree);
    const auto items = DirectoryReader::read(tree.root(), true);
    ASSERT_TRUE(items) << items.error().message();
    const auto map = byName(*items);

    struct Expected {
        std::string name;
        bool directory, link, hidden;
        std::optional<std::int64_t> size;
    };
    const std::vector<Expected> table{
        {latin1Name, true, false, false, std::nullopt},
        {"real", true, false, false, std::nullopt},
        {"five.txt", false, false, false, 5},
        {".profile", false, false, true, 1},
        {"listed", false, false, true, 2},
        {".hidden", false, false, true, 18},
        {"folder-link", true, true, false, std::nullopt},
        {"dangling", false, true, false, 14}, // the link's own size: the length of its target text
        {"pipe", false, false, false, 0},
    };
    ASSERT_EQ(map.size(), table.size());
    for (const auto& expected : table) {
        SCOPED_TRACE(expected.name);
        ASSERT_TRUE(map.contains(expected.name)) << "the name must come back byte for byte";
        const auto& item = map.at(expected.name);
        EXPECT_EQ(item.isDirectory, expected.directory);
        EXPECT_EQ(item.isSymbolicLink, expected.link);
        EXPECT_EQ(item.isHidden, expected.hidden);
        EXPECT_EQ(item.size, expected.size);
        EXPECT_FALSE(item.isPackage);
        EXPECT_FALSE(item.isParentLink);
        EXPECT_TRUE(item.modificationDate.has_value());
        EXPECT_EQ(item.url(), tree / expected.name);
    }
}

TEST(DirectoryReader, LeavesOutDotNamesAndNamesListedInDotHiddenUnlessAsked)
{
    TempTree tree;
    populate(tree);
    const auto items = DirectoryReader::read(tree.root(), false);
    ASSERT_TRUE(items);
    std::set<std::string> names;
    for (const auto& item : *items)
        names.insert(item.name());
    EXPECT_EQ(names, (std::set<std::string>{latin1Name, "real", "five.txt", "folder-link", "dangling", "pipe"}));

    tree.fifo("fifo-list/.hidden"); // reading it would block the listing
    tree.file("fifo-list/shown");
    const auto beside = DirectoryReader::read(tree / "fifo-list", false);
    ASSERT_TRUE(beside);
    ASSERT_EQ(beside->size(), 1u);
    EXPECT_EQ(beside->front().name(), "shown");
}

TEST(DirectoryReader, GivesTheSameItemForOneEntryAsForTheWholeListing)
{
    TempTree tree;
    populate(tree);
    tree.setModificationTime("five.txt", 1'000'000'000, 123'456'789);
    const auto items = DirectoryReader::read(tree.root().native() + "/", true);
    ASSERT_TRUE(items);
    for (const auto& item : *items) {
        SCOPED_TRACE(item.name());
        EXPECT_EQ(DirectoryReader::makeItem(item.url()), item);
        if (item.name() == "five.txt") {
            EXPECT_EQ(item.modificationDate->time_since_epoch(), std::chrono::nanoseconds(1'000'000'000'123'456'789));
        }
    }
    const auto missing = DirectoryReader::makeItem(tree / "missing/.deep");
    EXPECT_EQ(missing.url(), tree / "missing/.deep");
    EXPECT_TRUE(missing.isHidden);
    EXPECT_FALSE(missing.isDirectory || missing.isSymbolicLink || missing.size || missing.modificationDate);
}

TEST(DirectoryReader, ReportsTheErrorOfAFolderItCannotList)
{
    TempTree tree;
    tree.file("file");
    const auto missing = DirectoryReader::read(tree / "missing", true);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), std::errc::no_such_file_or_directory);
    const auto notFolder = DirectoryReader::read(tree / "file", true);
    ASSERT_FALSE(notFolder);
    EXPECT_EQ(notFolder.error(), std::errc::not_a_directory);

    const auto empty = DirectoryReader::read(tree.folder("empty"), true);
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->empty());
}

TEST(DirectoryReader, ReportsPermissionDenied)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "permissions do not stop root; this case runs as a normal user";
    TempTree tree;
    const auto locked = tree.folder("locked");
    ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
    const auto denied = DirectoryReader::read(locked, true);
    ASSERT_FALSE(denied);
    EXPECT_EQ(denied.error(), std::errc::permission_denied);
}

} // namespace
} // namespace orbisk
