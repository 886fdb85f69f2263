#include <gtest/gtest.h>

#include <sys/mount.h>

#include <cerrno>
#include <cstring>

#include "ZipTestSupport.h"
#include "core/operations/UndoTestSupport.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

// A 2 MiB tmpfs to fill up; skipped where mounting is not allowed.
class ZipFullVolume : public testing::Test {
protected:
    void SetUp() override
    {
        if (::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=2m") != 0)
            GTEST_SKIP() << "cannot mount a tmpfs here (needs root): " << std::strerror(errno);
        mounted = true;
        std::string data(6 << 20, '\0');
        unsigned state = 3;
        for (auto& c : data)
            c = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
        tree.file("src/Big/random.bin", data);
        tree.file("src/Big/small.txt", "small");
    }
    void TearDown() override
    {
        if (mounted)
            ::umount2(small.c_str(), MNT_DETACH);
    }

    TempTree tree;
    fs::path small = tree.folder("small");
    bool mounted = false;
};

TEST_F(ZipFullVolume, CompressingOntoAFullVolumeStopsAndLeavesNoArchive)
{
    const auto before = test::picture(tree / "src");
    const auto report = test::compress({tree / "src/Big"}, small / "Big.zip");
    ASSERT_TRUE(report.abortReason);
    EXPECT_NE(report.abortReason->find("No space left on device"), std::string::npos) << *report.abortReason;
    EXPECT_TRUE(report.undoChanges.empty());
    EXPECT_TRUE(fs::is_empty(small));
    EXPECT_EQ(test::picture(tree / "src"), before);
}

TEST_F(ZipFullVolume, ExtractingOntoAFullVolumeStopsAndLeavesNoStagingFolder)
{
    ASSERT_TRUE(test::compress({tree / "src/Big"}, tree / "Big.zip").isCompleteSuccess());
    const auto archiveBytes = test::bytesOf(tree / "Big.zip");
    tree.file("small/existing.txt", "here before");
    const auto report = test::extract(tree / "Big.zip", small);
    ASSERT_TRUE(report.abortReason) << testing::PrintToString(test::messages(report));
    EXPECT_NE(report.abortReason->find("No space left on device"), std::string::npos) << *report.abortReason;
    EXPECT_TRUE(report.completed.empty());
    EXPECT_EQ(test::picture(small), (std::map<std::string, std::string>{{"existing.txt", "here before"}}));
    EXPECT_EQ(test::bytesOf(tree / "Big.zip"), archiveBytes);
}

} // namespace
} // namespace orbisk
