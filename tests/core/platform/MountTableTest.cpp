#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "platform/MountTable.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

const char* const sample = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                           "23 22 0:21 / /proc rw,relatime - proc proc rw\n"
                           "30 22 8:17 / /mnt/My\\040Disk rw shared:5 master:2 - ext4 /dev/sdb1 rw\n"
                           "31 22 8:1 /home/shared /mnt/bind rw - ext4 /dev/sda1 rw\n"
                           "32 22 0:40 / /mnt/tab\\011and\\134slash rw - fuse.sshfs user@host:/x\\040y rw\n"
                           "garbage line\n"
                           "33 22 0:41 / /mnt/bind rw - tmpfs tmpfs rw\n"
                           "34 22 0:42 / /mnt/My rw - tmpfs tmpfs rw";

TEST(MountTable, ParsesTheKernelsFormatWithItsEscapes)
{
    const auto table = MountTable::parse(sample);
    ASSERT_EQ(table.entries().size(), 7U) << "the malformed line is skipped";
    const auto& disk = table.entries()[2];
    EXPECT_EQ(disk.mountPoint, "/mnt/My Disk");
    EXPECT_EQ(disk.device, makedev(8, 17));
    EXPECT_EQ(disk.fileSystemType, "ext4") << "optional fields before the separator are skipped";
    EXPECT_EQ(disk.source, "/dev/sdb1");
    EXPECT_EQ(table.entries()[3].root, "/home/shared");
    EXPECT_EQ(table.entries()[4].mountPoint, "/mnt/tab\tand\\slash");
    EXPECT_EQ(table.entries()[4].source, "user@host:/x y");
}

TEST(MountTable, FindsTheMountOfAPathByWholeComponentsAndTheTopmostMount)
{
    const auto table = MountTable::parse(sample);
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"/", "/"},
        {"/etc/passwd", "/"},
        {"/proc", "/proc"},
        {"/proc/self/x", "/proc"},
        {"/processes", "/"},
        {"/mnt/My Disk/a", "/mnt/My Disk"},
        {"/mnt/My", "/mnt/My"},
        {"/mnt/My Diskette", "/"},
    };
    for (const auto& [path, mountPoint] : cases) {
        SCOPED_TRACE(path);
        const auto* entry = table.mountOf(path);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->mountPoint, mountPoint);
    }
    const auto* covered = table.mountOf("/mnt/bind/file");
    ASSERT_NE(covered, nullptr);
    EXPECT_EQ(covered->fileSystemType, "tmpfs") << "the later mount hides the bind mount below it";
    EXPECT_EQ(MountTable::parse("").mountOf("/x"), nullptr);
}

TEST(MountTable, ListsEachUserVolumeOnceAndTellsWhatIsMounted)
{
    const auto table = MountTable::parse(sample);
    std::vector<std::filesystem::path> points;
    for (const auto& volume : table.userVolumes())
        points.push_back(volume.mountPoint);
    const std::vector<std::filesystem::path> expected = {"/mnt/My Disk", "/mnt/bind", "/mnt/tab\tand\\slash",
                                                         "/mnt/My"};
    EXPECT_EQ(points, expected) << "/proc and / are no user volumes; /mnt/bind, mounted twice, is listed once";
    EXPECT_TRUE(table.isMounted("/mnt/My Disk"));
    EXPECT_FALSE(table.isMounted("/mnt/My Disk/a"));
    EXPECT_EQ(table.mountPointOf("/mnt/My Diskette"), "/");
    EXPECT_EQ(MountTable::parse("").mountPointOf("/x"), "/");
}

TEST(MountTable, TheLiveTableKnowsWhereATemporaryFolderLives)
{
    test::TempTree tree;
    const auto table = MountTable::read();
    ASSERT_TRUE(table);
    const auto real = std::filesystem::canonical(tree.root());
    const auto* entry = table->mountOf(real);
    ASSERT_NE(entry, nullptr);
    struct stat status {};
    ASSERT_EQ(::stat(real.c_str(), &status), 0);
    if (entry->fileSystemType != "btrfs") { // btrfs subvolumes report their own device numbers
        EXPECT_EQ(entry->device, status.st_dev);
    }
    EXPECT_FALSE(MountTable::read("/nonexistent/mountinfo"));
}

} // namespace
} // namespace orbisk
