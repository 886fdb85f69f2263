#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>

#include "files/FileItem.h"

namespace orbisk {
namespace {

FileItem fileAt(const char* url, bool directory = false)
{
    FileItem item{std::filesystem::path(url)};
    item.isDirectory = directory;
    return item;
}

TEST(FileItem, TakesTheExtensionAfterTheLastDotOfFilesOnly)
{
    const struct {
        const char* url;
        bool directory;
        std::string_view extension;
    } table[] = {
        {"/d/archive.tar.gz", false, "gz"}, {"/d/.profile", false, ""},  {"/d/x.app", true, ""},
        {"/d/README", false, ""},           {"/d/trailing.", false, ""}, {"/d/..double", false, "double"},
        {"/d/photo.JPG", false, "JPG"},     {"/d/a.b c", false, "b c"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.url);
        EXPECT_EQ(fileAt(row.url, row.directory).typeExtension(), row.extension);
    }
}

TEST(FileItem, SplitsItsUrlIntoFolderAndNameByteForByte)
{
    const struct {
        const char* url;
        const char* folder;
        const char* name;
        const char* rebuilt;
    } table[] = {
        {"/home/a/b/", "/home/a", "b", "/home/a/b"},
        {"/", "", "/", "/"},
        {"/d/caf\xE9\n", "/d", "caf\xE9\n", "/d/caf\xE9\n"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.url);
        const FileItem item{std::filesystem::path(row.url)};
        EXPECT_EQ(item.folder(), row.folder);
        EXPECT_EQ(item.name(), row.name);
        EXPECT_EQ(item.url().native(), row.rebuilt);
    }
}

TEST(FileItem, ParentLinkLeadsToTheEnclosingFolderAndCarriesNothingElse)
{
    const auto parent = FileItem::parentLink("/Users/a/b");
    EXPECT_EQ(parent.url(), "/Users/a");
    EXPECT_EQ(parent.name(), "..");
    EXPECT_TRUE(parent.isDirectory && parent.isParentLink);
    EXPECT_FALSE(parent.isPackage || parent.isSymbolicLink || parent.isHidden);
    EXPECT_FALSE(parent.size || parent.modificationDate);
    EXPECT_EQ(parent.typeExtension(), "");
    EXPECT_EQ(FileItem::parentLink("/Users/a/b/").url(), "/Users/a");
    EXPECT_EQ(FileItem::parentLink("/top").url(), "/");
}

TEST(FileItem, DiffersAndHashesApartWhenAnyOneFieldDiffers)
{
    FileItem base = fileAt("/d/name.txt");
    base.size = 10;
    base.modificationDate = FileItem::Date(std::chrono::seconds(1'000));
    const std::vector<std::pair<const char*, std::function<void(FileItem&)>>> changes{
        {"url",
         [](FileItem& i) {
             FileItem moved = fileAt("/e/name.txt");
             moved.size = i.size;
             moved.modificationDate = i.modificationDate;
             i = moved;
         }},
        {"size", [](FileItem& i) { i.size = 11; }},
        {"date", [](FileItem& i) { i.modificationDate = FileItem::Date(std::chrono::nanoseconds(1'000'000'000'001)); }},
        {"isDirectory", [](FileItem& i) { i.isDirectory = true; }},
        {"isPackage", [](FileItem& i) { i.isPackage = true; }},
        {"isSymbolicLink", [](FileItem& i) { i.isSymbolicLink = true; }},
        {"isHidden", [](FileItem& i) { i.isHidden = true; }},
        {"isParentLink", [](FileItem& i) { i.isParentLink = true; }},
    };
    std::unordered_set<std::size_t> hashes{std::hash<FileItem>{}(base)};
    for (const auto& [field, change] : changes) {
        SCOPED_TRACE(field);
        FileItem other = base;
        EXPECT_EQ(other, base);
        change(other);
        EXPECT_NE(other, base);
        EXPECT_TRUE(hashes.insert(std::hash<FileItem>{}(other)).second) << "a collision on a one-field change";
    }
    // Equal items made separately (no shared folder text) still hash alike.
    FileItem twin = fileAt("/d/name.txt");
    twin.size = 10;
    twin.modificationDate = base.modificationDate;
    EXPECT_EQ(twin, base);
    EXPECT_EQ(std::hash<FileItem>{}(twin), std::hash<FileItem>{}(base));
}

} // namespace
} // namespace orbisk
