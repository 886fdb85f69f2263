#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/ExclusiveRename.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using ExclusiveRename::Method;
using test::TempTree;
namespace fs = std::filesystem;

const std::vector<std::pair<Method, const char*>> methods = {
    {Method::automatic, "automatic"},
    {Method::withoutFlag, "without the flag"},
    {Method::placeholderOnly, "placeholder only"},
};

enum class Kind { file, folder, link, danglingLink };

const std::vector<std::pair<Kind, const char*>> kinds = {
    {Kind::file, "file"}, {Kind::folder, "folder"}, {Kind::link, "link"}, {Kind::danglingLink, "dangling link"}};

void make(TempTree& tree, Kind kind, const std::string& name)
{
    switch (kind) {
    case Kind::file: tree.file(name, "contents of " + name); break;
    case Kind::folder: tree.file(name + "/inside", "inner " + name); break;
    case Kind::link: tree.link(name, "target-" + name); break;
    case Kind::danglingLink: tree.link(name, "/nonexistent/" + name); break;
    }
}

struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const Identity&) const = default;
};

Identity identity(const fs::path& path)
{
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return {status.st_dev, status.st_ino};
}

int errorOf(const std::expected<void, int>& result)
{
    return result ? 0 : result.error();
}

std::vector<std::string> names(const fs::path& folder)
{
    std::vector<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder))
        result.push_back(entry.path().filename().native());
    std::sort(result.begin(), result.end());
    return result;
}

TEST(ExclusiveRename, MovesEveryKindOfEntryToAFreeNameKeepingItsIdentity)
{
    for (const auto& [method, methodName] : methods) {
        for (const auto& [kind, kindName] : kinds) {
            SCOPED_TRACE(std::string(methodName) + ", " + kindName);
            TempTree tree;
            const std::string source = "caf\xE9 #1?%.x";
            make(tree, kind, source);
            const auto before = identity(tree / source);

            const auto renamed = ExclusiveRename::rename(tree / source, tree / "new\nname", method);
            ASSERT_TRUE(renamed) << std::strerror(renamed.error());
            EXPECT_FALSE(tree.exists(source));
            EXPECT_EQ(identity(tree / "new\nname"), before) << "the same object, not a copy";
            EXPECT_EQ(names(tree.root()), std::vector<std::string>{"new\nname"}) << "nothing left behind";
            if (kind == Kind::folder) {
                EXPECT_EQ(tree.read("new\nname/inside"), "inner " + source);
            }
        }
    }
}

TEST(ExclusiveRename, RefusesEveryTakenNameAndLeavesBothEntriesAsTheyWere)
{
    for (const auto& [method, methodName] : methods) {
        for (const auto& [sourceKind, sourceName] : kinds) {
            for (const auto& [targetKind, targetName] : kinds) {
                SCOPED_TRACE(std::string(methodName) + ", " + sourceName + " onto " + targetName);
                TempTree tree;
                make(tree, sourceKind, "source");
                make(tree, targetKind, "target");
                const auto sourceBefore = identity(tree / "source");
                const auto targetBefore = identity(tree / "target");

                const auto renamed = ExclusiveRename::rename(tree / "source", tree / "target", method);
                ASSERT_FALSE(renamed);
                EXPECT_EQ(renamed.error(), EEXIST);
                EXPECT_EQ(identity(tree / "source"), sourceBefore);
                EXPECT_EQ(identity(tree / "target"), targetBefore);
                EXPECT_EQ(names(tree.root()), (std::vector<std::string>{"source", "target"}));
            }
        }
    }
}

TEST(ExclusiveRename, NeverReplacesAnEmptyFolderOrAnEmptyFile)
{
    // Exactly the cases a plain rename(2) would silently replace.
    for (const auto& [method, methodName] : methods) {
        SCOPED_TRACE(methodName);
        TempTree tree;
        tree.file("folder/x");
        tree.folder("emptyFolder");
        tree.file("file", "data");
        tree.file("emptyFile");
        EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "folder", tree / "emptyFolder", method)), EEXIST);
        EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "file", tree / "emptyFile", method)), EEXIST);
        EXPECT_TRUE(tree.exists("folder/x"));
        EXPECT_EQ(tree.read("file"), "data");
        EXPECT_EQ(tree.read("emptyFile"), "");
    }
}

TEST(ExclusiveRename, WorksRelativeToOpenFoldersAndAcrossThem)
{
    for (const auto& [method, methodName] : methods) {
        SCOPED_TRACE(methodName);
        TempTree tree;
        tree.file("a/item", "payload");
        tree.folder("b");
        const int a = ::open((tree / "a").c_str(), O_DIRECTORY | O_RDONLY | O_CLOEXEC);
        const int b = ::open((tree / "b").c_str(), O_DIRECTORY | O_RDONLY | O_CLOEXEC);
        ASSERT_GE(a, 0);
        ASSERT_GE(b, 0);
        EXPECT_TRUE(ExclusiveRename::renameAt(a, "item", b, "moved", method));
        EXPECT_EQ(tree.read("b/moved"), "payload");
        EXPECT_FALSE(tree.exists("a/item"));
        ::close(a);
        ::close(b);
    }
}

TEST(ExclusiveRename, ReportsFailuresWithoutLeavingPlaceholders)
{
    for (const auto& [method, methodName] : methods) {
        SCOPED_TRACE(methodName);
        TempTree tree;
        tree.folder("parent/child");
        tree.file("file");
        // A folder cannot go into itself; a missing source or target folder is ENOENT.
        EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "parent", tree / "parent/child/parent", method)), EINVAL);
        EXPECT_EQ(names(tree / "parent/child"), std::vector<std::string>{});
        EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "missing", tree / "x", method)), ENOENT);
        EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "file", tree / "no/x", method)), ENOENT);
        EXPECT_EQ(names(tree.root()), (std::vector<std::string>{"file", "parent"}));
    }
}

TEST(ExclusiveRename, RefusesToCrossVolumesAndLeavesTheSourceAlone)
{
    TempTree other("/dev/shm");
    TempTree tree;
    if (test::onSameVolume(tree.root(), other.root()))
        GTEST_SKIP() << "/dev/shm is on the same volume as the temporary folder";
    for (const auto& [method, methodName] : methods) {
        for (const auto& [kind, kindName] : kinds) {
            SCOPED_TRACE(std::string(methodName) + ", " + kindName);
            make(tree, kind, "item");
            EXPECT_EQ(errorOf(ExclusiveRename::rename(tree / "item", other / "item", method)), EXDEV);
            EXPECT_TRUE(tree.exists("item"));
            EXPECT_EQ(names(other.root()), std::vector<std::string>{});
            fs::remove_all(tree / "item");
        }
    }
}

} // namespace
} // namespace orbisk
