#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/TreeRemoval.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

mode_t modeOf(const fs::path& path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// As an ordinary user, where a read-only folder really refuses the removal of its entries: a deep
// copy with read-only folders, a link to another read-only folder inside one, and only a few
// levels allowed to keep their descriptors.
TEST(TreeRemoval, ReadOnlyFoldersGoThroughTheirDescriptorsAndALinkIsNeverFollowed)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root to become an ordinary user";
    TempTree tree;
    std::string path = "copy";
    for (int level = 0; level < 40; ++level) {
        path += level % 3 == 0 ? "/ro" : "/d";
        tree.file(path + "/f", "f");
    }
    tree.link("copy/ro/victim", (tree / "victim").native());
    tree.file("victim/keep", "keep");
    for (const auto& entry : fs::recursive_directory_iterator(tree.root()))
        ASSERT_EQ(::lchown(entry.path().c_str(), test::nobodyId, test::nobodyId), 0);
    ASSERT_EQ(::chown(tree.root().c_str(), test::nobodyId, test::nobodyId), 0);
    // Read-only from the bottom up, so that the making of the tree is not refused half-way.
    std::vector<fs::path> readOnly;
    for (const auto& entry : fs::recursive_directory_iterator(tree / "copy"))
        if (entry.path().filename() == "ro" && entry.is_directory())
            readOnly.push_back(entry.path());
    readOnly.push_back(tree / "victim");
    for (auto it = readOnly.rbegin(); it != readOnly.rend(); ++it)
        ASSERT_EQ(::chmod(it->c_str(), 0555), 0);

    const auto outcome = test::runUnprivileged([&]() -> std::string {
        const auto removed = TreeRemoval::removeTree(tree / "copy", 4);
        return removed ? "removed" : "failed: " + std::to_string(removed.error());
    });
    ASSERT_TRUE(outcome.has_value()) << outcome.error();
    EXPECT_EQ(*outcome, "removed");
    EXPECT_FALSE(tree.exists("copy"));
    EXPECT_EQ(modeOf(tree / "victim"), 0555U);
    EXPECT_EQ(tree.read("victim/keep"), "keep");
    ::chmod((tree / "victim").c_str(), 0755);
}

} // namespace
} // namespace orbisk
