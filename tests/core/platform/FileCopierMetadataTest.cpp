#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "CopyTestSupport.h"
#include "platform/FileCopier.h"
#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

const std::vector<std::pair<std::string, std::string>> attributes = {
    {"user.plain", "value"},
    {"user.binary", std::string("\0\x01\xFF\0", 4)},
    {"user.empty", ""},
    {"user.large", std::string(3000, 'x')},
};

bool setAttributes(const fs::path& path)
{
    for (const auto& [name, value] : attributes)
        if (::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) != 0)
            return false;
    return true;
}

std::string attribute(const fs::path& path, const std::string& name)
{
    std::string value(8192, '\0');
    const ssize_t size = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
    return size < 0 ? "<missing>" : value.substr(0, static_cast<std::size_t>(size));
}

std::string acl(const fs::path& path, const char* which = "--access")
{
    return test::run({"getfacl", "--omit-header", "--absolute-names", which, path.native()}).out;
}

// Compared with the times given to the source, not with the source afterwards: reading it for
// the copy may have moved its access time.
void expectTimes(const fs::path& copy, const timespec (&expected)[2])
{
    const auto status = test::statusOf(copy);
    EXPECT_EQ(status.st_atim.tv_sec, expected[0].tv_sec);
    EXPECT_EQ(status.st_atim.tv_nsec, expected[0].tv_nsec);
    EXPECT_EQ(status.st_mtim.tv_sec, expected[1].tv_sec);
    EXPECT_EQ(status.st_mtim.tv_nsec, expected[1].tv_nsec);
}

TEST(FileCopierMetadata, ModeTimesAndAttributesArriveEvenOnReadOnlyFiles)
{
    for (const mode_t mode : {0644U, 0600U, 0755U, 0444U, 0400U, 04755U, 02750U, 01777U}) {
        SCOPED_TRACE(mode);
        TempTree tree;
        tree.file("source", "contents");
        const bool haveAttributes = setAttributes(tree / "source");
        ASSERT_EQ(::chmod((tree / "source").c_str(), mode), 0);
        const timespec times[2] = {{1'234'567'890, 987'654'321}, {1'600'000'000, 1}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (tree / "source").c_str(), times, 0), 0);

        auto result = FileCopier::copyFile(tree / "source", tree / "copy");
        ASSERT_TRUE(result) << test::describe(result.error());
        EXPECT_EQ(test::statusOf(tree / "copy").st_mode & 07777, mode);
        expectTimes(tree / "copy", times);
        if (haveAttributes) {
            for (const auto& [name, value] : attributes)
                EXPECT_EQ(attribute(tree / "copy", name), value) << name;
        }
    }
}

TEST(FileCopierMetadata, AccessControlListsAreCopied)
{
    if (!test::haveProgram("setfacl"))
        GTEST_SKIP() << "setfacl is not installed";
    TempTree tree;
    tree.file("source", "x");
    if (test::run({"setfacl", "-m", "u:nobody:rw-,g:daemon:r--,m::rw-", (tree / "source").native()}).exitCode != 0)
        GTEST_SKIP() << "this file system has no ACLs";
    ASSERT_TRUE(FileCopier::copyFile(tree / "source", tree / "copy"));
    EXPECT_NE(acl(tree / "copy").find("user:nobody:rw-"), std::string::npos) << acl(tree / "copy");
    EXPECT_EQ(acl(tree / "copy"), acl(tree / "source"));
}

// Runs a copy as another user in a child process; returns whether it succeeded.
bool copyAs(uid_t user, gid_t group, const fs::path& from, const fs::path& to)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const bool switched =
            ::setgroups(0, nullptr) == 0 && ::setresgid(group, group, group) == 0 && ::setresuid(user, user, user) == 0;
        ::_exit(switched && FileCopier::copyFile(from, to) ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(FileCopierMetadata, OwnerIsKeptWhereAllowedAndSetuidAndSetgidOnlyWithIt)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "giving files to other users needs root";
    TempTree tree;
    ASSERT_EQ(::chmod(tree.root().c_str(), 0777), 0);
    const fs::path source = tree.file("source", "x");
    ASSERT_EQ(::chown(source.c_str(), 4321, 8765), 0);
    ASSERT_EQ(::chmod(source.c_str(), 06755), 0);

    // Root may keep the owner, so the copy keeps both bits; another user may not, and a copy
    // that belongs to them must not become setuid or setgid.
    ASSERT_TRUE(FileCopier::copyFile(source, tree / "by root"));
    ASSERT_TRUE(copyAs(65534, 65534, source, tree / "by nobody"));
    const auto byRoot = test::statusOf(tree / "by root");
    EXPECT_EQ(byRoot.st_uid, 4321U);
    EXPECT_EQ(byRoot.st_gid, 8765U);
    EXPECT_EQ(byRoot.st_mode & 07777, 06755U);
    const auto byNobody = test::statusOf(tree / "by nobody");
    EXPECT_EQ(byNobody.st_uid, 65534U);
    EXPECT_EQ(byNobody.st_mode & 07777, 0755U);
}

TEST(FileCopierMetadata, FoldersStartOwnerOnlyAndGetTheirMetadataAfterTheirContents)
{
    TempTree tree;
    tree.file("source/inside", "x");
    const bool haveAttributes = setAttributes(tree / "source");
    const bool haveDefaultAcl =
        test::haveProgram("setfacl") &&
        test::run({"setfacl", "-d", "-m", "u:nobody:r-x", (tree / "source").native()}).exitCode == 0;
    ASSERT_EQ(::chmod((tree / "source").c_str(), 0555), 0);
    const timespec times[2] = {{1'400'000'000, 7}, {1'500'000'000, 42}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (tree / "source").c_str(), times, 0), 0);

    ASSERT_TRUE(FileCopier::createFolder(tree / "copy"));
    EXPECT_EQ(
        test::statusOf(tree / "copy").st_mode & 07777, 0700U & ~[] {
            const mode_t mask = ::umask(0);
            ::umask(mask);
            return mask;
        }());
    ASSERT_TRUE(FileCopier::copyFile(tree / "source/inside", tree / "copy/inside"));
    auto result = FileCopier::copyFolderMetadata(tree / "source", tree / "copy");
    ASSERT_TRUE(result) << test::describe(result.error());

    EXPECT_EQ(test::statusOf(tree / "copy").st_mode & 07777, 0555U);
    expectTimes(tree / "copy", times);
    if (haveAttributes) {
        EXPECT_EQ(attribute(tree / "copy", "user.binary"), std::string("\0\x01\xFF\0", 4));
    }
    if (haveDefaultAcl) {
        EXPECT_EQ(acl(tree / "copy", "--default"), acl(tree / "source", "--default"));
    }

    tree.link("link to folder", "source");
    EXPECT_FALSE(FileCopier::copyFolderMetadata(tree / "link to folder", tree / "copy"));
}

} // namespace
} // namespace orbisk
