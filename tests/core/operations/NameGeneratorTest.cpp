#include <gtest/gtest.h>

#include <set>

#include "operations/NameGenerator.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using NameGenerator::SplitName;

/// A taken-test over a fixed set of names.
NameGenerator::TakenTest takenAmong(std::set<std::string> names)
{
    return [names = std::move(names)](const std::string& name) { return names.contains(name); };
}

TEST(NameGenerator, SplitsTheExtensionOnlyWhereBothSidesAreReal)
{
    struct Case {
        std::string name;
        bool isFolder;
        SplitName expected;
    };
    const Case cases[] = {
        {"archive.tar.gz", false, {"archive.tar", "gz"}},
        {"report.txt", false, {"report", "txt"}},
        {".profile", false, {".profile", std::nullopt}},
        {"name.", false, {"name.", std::nullopt}},
        {"a..b", false, {"a..b", std::nullopt}},
        {"README", false, {"README", std::nullopt}},
        {"photos.2024", true, {"photos.2024", std::nullopt}},
        {"caf\xE9.t\xFFt", false, {"caf\xE9", "t\xFFt"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(NameGenerator::splitExtension(c.name, c.isFolder), c.expected);
    }
}

TEST(NameGenerator, KeepBothGivesTheIncomingItemTheNextFreeNumber)
{
    struct Case {
        std::string name;
        bool isFolder;
        std::set<std::string> taken;
        std::string expected;
    };
    const Case cases[] = {
        {"report.txt", false, {}, "report 2.txt"},
        {"report.txt", false, {"report 2.txt", "report 3.txt"}, "report 4.txt"},
        {"report 2.txt", false, {}, "report 3.txt"},
        {"report 999999.txt", false, {}, "report 1000000.txt"},
        {"draft 0000001.txt", false, {}, "draft 0000001 2.txt"},
        {"draft 0007.txt", false, {}, "draft 8.txt"},
        {"Photos", true, {"Photos 2"}, "Photos 3"},
        {"My.Folder", true, {}, "My.Folder 2"},
        {"2", false, {}, "2 2"},
        {" 5", false, {}, " 6"},
        {".profile", false, {}, ".profile 2"},
        {"\xFF\xFE.bin", false, {"\xFF\xFE 2.bin"}, "\xFF\xFE 3.bin"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto result = NameGenerator::keepBothName(c.name, c.isFolder, takenAmong(c.taken));
        EXPECT_EQ(result, c.expected);
        EXPECT_NE(result, c.name);
    }
    // The plain name is never offered, not even when it is free.
    EXPECT_EQ(NameGenerator::keepBothName("free.txt", false, takenAmong({})), "free 2.txt");
}

TEST(NameGenerator, KeepBothPassesOnTheFirstFailureOfItsTakenTest)
{
    int asked = 0;
    const std::function<std::expected<bool, std::string>(const std::string&)> failing =
        [&](const std::string& name) -> std::expected<bool, std::string> {
        ++asked;
        if (name == "a 3.txt")
            return std::unexpected("cannot look");
        return true;
    };
    const auto result = NameGenerator::tryKeepBothName<std::string>("a.txt", false, failing);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), "cannot look");
    EXPECT_EQ(asked, 2);
}

TEST(NameGenerator, OldAndDuplicateNamesCountUpUntilFree)
{
    EXPECT_EQ(NameGenerator::oldName("a.txt", false, takenAmong({})), "a (old).txt");
    EXPECT_EQ(NameGenerator::oldName("a.txt", false, takenAmong({"a (old).txt"})), "a (old 2).txt");
    EXPECT_EQ(NameGenerator::oldName("a.txt", false, takenAmong({"a (old).txt", "a (old 2).txt"})), "a (old 3).txt");
    EXPECT_EQ(NameGenerator::oldName("Music.v2", true, takenAmong({})), "Music.v2 (old)");

    EXPECT_EQ(NameGenerator::duplicateName("a.txt", false, takenAmong({})), "a copy.txt");
    EXPECT_EQ(NameGenerator::duplicateName("a.txt", false, takenAmong({"a copy.txt"})), "a copy 2.txt");
    EXPECT_EQ(NameGenerator::duplicateName("a.txt", false, takenAmong({"a copy.txt", "a copy 2.txt"})), "a copy 3.txt");
    EXPECT_EQ(NameGenerator::duplicateName(".bashrc", false, takenAmong({})), ".bashrc copy");
}

TEST(NameGenerator, ExistsCheckerSeesEveryKindOfEntryWithoutFollowingLinks)
{
    test::TempTree tree;
    tree.file("file");
    tree.folder("folder");
    tree.link("dangling", "nowhere");
    tree.fifo("pipe");
    tree.file("caf\xE9");
    const auto taken = NameGenerator::existsChecker(tree.root());
    for (const std::string name : {"file", "folder", "dangling", "pipe", "caf\xE9"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(taken(name));
    }
    EXPECT_FALSE(taken("nowhere"));
    EXPECT_FALSE(taken("File")) << "names are compared as bytes on a case-sensitive volume";
    EXPECT_EQ(NameGenerator::keepBothName("file", false, taken), "file 2");
}

} // namespace
} // namespace orbisk
