#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "operations/ItemActions.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using test::TempTree;
namespace fs = std::filesystem;

/// Names of the entries of a folder, hidden ones included.
std::set<std::string> entries(const fs::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().native());
    return names;
}

TEST(ItemActions, ValidatesNamesByTheirBytes)
{
    const std::string twoByteLetters = "\xC3\xA9\xC3\xA9\xC3\xA9"; // "ééé": six bytes
    struct Case {
        std::string name;
        std::string reason; ///< empty when the name is fine
    };
    const Case cases[] = {
        {"", "a name can’t be empty."},
        {" \t ", "a name can’t be empty."},
        {".", "“.” and “..” are reserved."},
        {"..", "“.” and “..” are reserved."},
        {"a/b", "a name can’t contain “/”."},
        {std::string("a\0b", 3), "a name can’t contain a NUL character."},
        {std::string(256, 'x'), "the name is longer than 255 bytes."},
        {std::string(255, 'x'), ""},
        {std::string(126, 'x') + twoByteLetters.substr(0, 2) + std::string(127, 'y'), ""},
        {std::string(128, 'x') + std::string(64, 'y') + twoByteLetters + std::string(58, 'z'),
         "the name is longer than 255 bytes."},
        {"...", ""},
        {" leading and trailing ", ""},
        {"\xFF\xFEnot utf-8", ""},
        {"-rf", ""},
        {"line\nbreak", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.name));
        const auto result = ItemActions::validateName(c.name);
        if (c.reason.empty()) {
            EXPECT_TRUE(result) << result.error().errorDescription();
        } else {
            ASSERT_FALSE(result);
            EXPECT_EQ(result.error(), FileOperationError::invalidName(c.name, c.reason));
        }
    }
}

TEST(ItemActions, RenamesExclusivelyAndNeverReplaces)
{
    TempTree tree;
    tree.file("notes.txt", "notes");
    tree.file("other.txt", "other");
    tree.file("caf\xE9", "latin-1");

    auto renamed = ItemActions::rename(tree / "notes.txt", "plans.txt");
    ASSERT_TRUE(renamed) << renamed.error().errorDescription();
    EXPECT_EQ(*renamed, tree / "plans.txt");
    EXPECT_EQ(tree.read("plans.txt"), "notes");
    EXPECT_FALSE(tree.exists("notes.txt"));

    renamed = ItemActions::rename(tree / "plans.txt", "other.txt");
    ASSERT_FALSE(renamed);
    EXPECT_EQ(renamed.error(), FileOperationError::itemExists("other.txt"));
    EXPECT_EQ(tree.read("plans.txt"), "notes");
    EXPECT_EQ(tree.read("other.txt"), "other");

    renamed = ItemActions::rename(tree / "plans.txt", "a/b");
    ASSERT_FALSE(renamed);
    EXPECT_EQ(renamed.error().errorDescription(),
              FileOperationError::invalidName("a/b", "a name can’t contain “/”.").errorDescription());

    EXPECT_EQ(ItemActions::rename(tree / "plans.txt", "plans.txt").value(), tree / "plans.txt");

    renamed = ItemActions::rename(tree / "caf\xE9", "\xFF\xFE");
    ASSERT_TRUE(renamed);
    EXPECT_EQ(tree.read("\xFF\xFE"), "latin-1");

    renamed = ItemActions::rename(tree / "gone", "anything");
    ASSERT_FALSE(renamed);
    EXPECT_EQ(renamed.error(), FileOperationError::system(ENOENT, "rename", tree / "gone"));
    EXPECT_EQ(entries(tree.root()), (std::set<std::string>{"plans.txt", "other.txt", "\xFF\xFE"}));
}

TEST(ItemActions, ACaseChangeBetweenTwoLinksToOneFileReplacesNeitherAndLeavesNoTemporaryName)
{
    // On a case-sensitive volume two hard links whose names differ only in case look like a case
    // change of one item; the temporary route must find the name taken and come back.
    TempTree tree;
    tree.file("notes.txt", "shared");
    ASSERT_EQ(::link((tree / "notes.txt").c_str(), (tree / "Notes.txt").c_str()), 0);

    const auto renamed = ItemActions::rename(tree / "notes.txt", "Notes.txt");
    ASSERT_FALSE(renamed);
    EXPECT_EQ(renamed.error(), FileOperationError::itemExists("Notes.txt"));
    EXPECT_EQ(entries(tree.root()), (std::set<std::string>{"notes.txt", "Notes.txt"}));
}

TEST(ItemActions, CreatesFoldersAndFilesExclusively)
{
    TempTree tree;
    const auto umaskWas = ::umask(022);

    auto folder = ItemActions::createDirectory("New Folder", tree.root());
    ASSERT_TRUE(folder);
    struct stat st {};
    ASSERT_EQ(::lstat(folder->c_str(), &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_EQ(st.st_mode & 07777, 0755u);

    auto file = ItemActions::createEmptyFile("New Text File.txt", tree.root());
    ASSERT_TRUE(file);
    ASSERT_EQ(::lstat(file->c_str(), &st), 0);
    EXPECT_TRUE(S_ISREG(st.st_mode));
    EXPECT_EQ(st.st_size, 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u);

    tree.file("taken.txt", "keep me");
    tree.link("dangling", "nowhere");
    auto again = ItemActions::createEmptyFile("taken.txt", tree.root());
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error(), FileOperationError::itemExists("taken.txt"));
    EXPECT_EQ(tree.read("taken.txt"), "keep me");
    again = ItemActions::createEmptyFile("dangling", tree.root());
    ASSERT_FALSE(again) << "a dangling link is never followed to create its target";
    EXPECT_FALSE(tree.exists("nowhere"));

    auto folderAgain = ItemActions::createDirectory("taken.txt", tree.root());
    ASSERT_FALSE(folderAgain);
    EXPECT_EQ(folderAgain.error(), FileOperationError::system(EEXIST, "create the folder", tree / "taken.txt"));
    folderAgain = ItemActions::createDirectory("inside", tree / "missing");
    ASSERT_FALSE(folderAgain);
    EXPECT_EQ(folderAgain.error(), FileOperationError::system(ENOENT, "create the folder", tree / "missing/inside"));
    EXPECT_EQ(ItemActions::createDirectory("..", tree.root()).error().kind(), FileOperationError::Kind::invalidName);
    EXPECT_EQ(ItemActions::createEmptyFile("", tree.root()).error().kind(), FileOperationError::Kind::invalidName);

    ASSERT_TRUE(ItemActions::createEmptyFile("\xE9t\xE9", tree.root()));
    EXPECT_TRUE(tree.exists("\xE9t\xE9"));
    ::umask(umaskWas);
}

TEST(ItemActions, DuplicateNamesAreFreeInTheItemsOwnFolder)
{
    TempTree tree;
    tree.file("a.txt");
    tree.file("a copy.txt");
    tree.folder("photos.2024");
    tree.link("link.txt", "a.txt");
    EXPECT_EQ(ItemActions::duplicateName(tree / "a.txt"), "a copy 2.txt");
    EXPECT_EQ(ItemActions::duplicateName(tree / "photos.2024"), "photos.2024 copy");
    EXPECT_EQ(ItemActions::duplicateName(tree / "link.txt"), "link copy.txt");
}

} // namespace
} // namespace orbisk
