#include <gtest/gtest.h>

#include "support/Paths.h"
#include "support/TempTree.h"
#include "support/UnicodeText.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

TEST(Paths, ExpandsTypedPathsAgainstHomeAndTheCurrentFolder)
{
    TempTree tree;
    tree.folder("real/sub");
    tree.link("lnk", "real/sub");
    const auto home = Paths::home();
    EXPECT_EQ(Paths::expandTypedPath("~", "/x"), home);
    EXPECT_EQ(Paths::expandTypedPath("~/Music/", "/x"), home / "Music");
    EXPECT_EQ(Paths::expandTypedPath("/etc//ssh/", "/x"), "/etc/ssh");
    EXPECT_EQ(Paths::expandTypedPath("lnk/../b/./c", tree.root()), fs::canonical(tree / "real") / "b/c");
    EXPECT_EQ(Paths::expandTypedPath("lnk/..", tree.root()), fs::canonical(tree / "real"));
    EXPECT_EQ(Paths::expandTypedPath("~user", "/x"), "/x/~user") << "only ~ and ~/ name home";
    EXPECT_EQ(Paths::expandTypedPath(" ~/a ", "/x"), "/x/ ~/a ") << "blanks are part of the name";
    EXPECT_EQ(Paths::expandTypedPath("", "/x/y"), "/x/y");
}

TEST(Paths, ReadsDotDotAsTheKernelDoesButNeverResolvesTheItemItself)
{
    TempTree tree;
    const auto top = fs::canonical(tree.root());
    tree.folder("real/sub");
    tree.link("lnk", "real/sub");
    tree.link("real/itemlink", "sub");
    struct Case {
        fs::path given, item, folder;
    };
    const Case cases[] = {
        {tree / "lnk/../x", top / "real/x", top / "real/x"},
        {tree / "lnk/../itemlink", top / "real/itemlink", top / "real/itemlink"},
        {tree / "real//./itemlink/", tree / "real/itemlink", tree / "real/itemlink"},
        {tree / "lnk/..", tree / "lnk/..", top / "real"},
        {tree / "lnk/./", tree / "lnk/.", tree / "lnk"},
        {tree / "missing/../x", tree / "missing/../x", tree / "missing/../x"},
        {"/", "/", "/"},
        {"x y/ ", fs::current_path() / "x y/ ", fs::current_path() / "x y/ "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        EXPECT_EQ(Paths::itemPath(c.given), c.item);
        EXPECT_EQ(Paths::folderPath(c.given), c.folder);
    }
    EXPECT_TRUE(Paths::endsInDotOrDotDot("a/.."));
    EXPECT_TRUE(Paths::endsInDotOrDotDot("a/./"));
    EXPECT_TRUE(Paths::endsInDotOrDotDot(".."));
    EXPECT_FALSE(Paths::endsInDotOrDotDot("a/..b"));
    EXPECT_FALSE(Paths::endsInDotOrDotDot("../a"));
    EXPECT_EQ(Paths::parentFolder(tree / "missing/../x"), tree / "missing/..") << "left to the kernel";
}

TEST(Paths, TellsContainmentByWholeComponents)
{
    EXPECT_TRUE(Paths::isSameOrInside("/a/b", "/a/b"));
    EXPECT_TRUE(Paths::isSameOrInside("/a/b/c", "/a/b/"));
    EXPECT_TRUE(Paths::isSameOrInside("/a/b/../b/c", "/a/b"));
    EXPECT_FALSE(Paths::isSameOrInside("/a/bc", "/a/b"));
    EXPECT_FALSE(Paths::isSameOrInside("/a", "/a/b"));
    EXPECT_TRUE(Paths::isSameOrInside("/anything", "/"));
}

TEST(Paths, TellsRealFoldersFromLinksAndFindsTheNearestExistingOne)
{
    TempTree tree;
    tree.folder("real/inner");
    tree.link("link", "real");
    tree.file("file");
    EXPECT_TRUE(Paths::isRealFolder(tree / "real"));
    EXPECT_FALSE(Paths::isRealFolder(tree / "link"));
    EXPECT_TRUE(Paths::isExistingFolder(tree / "link"));
    EXPECT_FALSE(Paths::isExistingFolder(tree / "file"));
    EXPECT_EQ(Paths::nearestExistingFolder(tree / "real/inner/gone/deeper"), tree / "real/inner");
    EXPECT_EQ(Paths::nearestExistingFolder(tree / "file/x"), tree.root());
    EXPECT_EQ(Paths::parentFolder("/"), "/");

    const auto capacity = Paths::volumeCapacity(tree.root());
    ASSERT_TRUE(capacity);
    EXPECT_GT(capacity->total, 0);
    EXPECT_LE(capacity->available, capacity->total);
    EXPECT_FALSE(Paths::volumeCapacity(tree / "missing"));
}

TEST(UnicodeText, SearchesIgnoringCaseAndDiacritics)
{
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("Café.txt", "cafe"));
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("notes.TXT", "txt"));
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("Resume.doc", "résumé"));
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("STRASSE", "straße")) << "full case folding";
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("שָׁלוֹם", "שלום")) << "Hebrew points are diacritics";
    EXPECT_FALSE(UnicodeText::containsIgnoringCaseAndDiacritics("caf\xE9", "cafe")) << "a raw byte is no letter";
    EXPECT_TRUE(UnicodeText::containsIgnoringCaseAndDiacritics("caf\xE9", "\xE9"));
}

} // namespace
} // namespace orbisk
