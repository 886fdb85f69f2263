#include <gtest/gtest.h>

#include "support/Processes.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"
#include "text/TextFile.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <fstream>
#include <set>

namespace orbisk {
namespace {

using test::TempTree;
namespace fs = std::filesystem;

std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().native());
    return names;
}

struct stat statusOf(const fs::path& path)
{
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

LoadedText loadOrFail(const fs::path& path)
{
    auto loaded = TextFile::load(path);
    EXPECT_TRUE(loaded) << (loaded ? "" : loaded.error().errorDescription());
    return loaded ? *loaded : LoadedText{};
}

std::expected<FileStamp, TextFileError> saveOver(const LoadedText& loaded, std::string_view text, const fs::path& path)
{
    return TextFile::save(text, path, loaded.encoding, loaded.lineEnding, loaded.stamp);
}

TEST(TextFileSave, RefusesToOverwriteAnotherProgramsChangeOrToRecreateADeletedFile)
{
    if (!test::haveProgram("sed"))
        GTEST_SKIP() << "sed is not installed";
    TempTree tree;
    const auto path = tree.file("notes.txt", "alpha\nbeta\n");
    const auto loaded = loadOrFail(path);

    // sed -i writes a new file and renames it over: another inode, same size.
    ASSERT_EQ(test::run({"sed", "-i", "s/alpha/ALPHA/", path.native()}).exitCode, 0);
    auto changed = saveOver(loaded, "mine\n", path);
    ASSERT_FALSE(changed);
    EXPECT_EQ(changed.error().kind, TextFileError::Kind::modifiedOnDisk);
    EXPECT_EQ(tree.read("notes.txt"), "ALPHA\nbeta\n");

    // The same inode and size, only the time changed (a touch, or a write of equal length).
    const auto reloaded = loadOrFail(path);
    tree.setModificationTime("notes.txt", 1'600'000'000, 5);
    auto touched = saveOver(reloaded, "mine\n", path);
    ASSERT_FALSE(touched);
    EXPECT_EQ(touched.error().kind, TextFileError::Kind::modifiedOnDisk);

    fs::remove(path);
    auto missing = saveOver(reloaded, "mine\n", path);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().kind, TextFileError::Kind::missingOnDisk);
    EXPECT_TRUE(namesIn(tree.root()).empty()) << "nothing may be written";

    // A save that succeeds hands back the stamp for the next one, and leaves no temporary behind.
    const auto again = tree.file("notes.txt", "v1\n");
    auto first = saveOver(loadOrFail(again), "v2\n", again);
    ASSERT_TRUE(first);
    auto second = TextFile::save("v3\n", again, TextEncodingKind::utf8, LineEnding::lf, *first);
    ASSERT_TRUE(second) << second.error().errorDescription();
    EXPECT_EQ(tree.read("notes.txt"), "v3\n");
    EXPECT_EQ(namesIn(tree.root()), std::set<std::string>{"notes.txt"});
}

TEST(TextFileSave, WritesThroughLinksAndKeepsHardLinksTogether)
{
    TempTree tree;
    const auto target = tree.file("real/target.txt", "old\n");
    const auto link = tree.link("links/second", "first");
    tree.link("links/first", "../real/target.txt");
    auto saved = saveOver(loadOrFail(link), "new\n", link);
    ASSERT_TRUE(saved) << saved.error().errorDescription();
    EXPECT_TRUE(S_ISLNK(statusOf(link).st_mode));
    EXPECT_TRUE(S_ISLNK(statusOf(tree / "links/first").st_mode));
    EXPECT_EQ(tree.read("real/target.txt"), "new\n");
    EXPECT_EQ(namesIn(tree / "real"), std::set<std::string>{"target.txt"});

    // A save through a dangling link creates the file it points to.
    const auto dangling = tree.link("links/dangling", "../real/created.txt");
    ASSERT_TRUE(TextFile::save("made\n", dangling, TextEncodingKind::utf8, LineEnding::lf));
    EXPECT_TRUE(S_ISLNK(statusOf(dangling).st_mode));
    EXPECT_EQ(tree.read("real/created.txt"), "made\n");

    const auto original = tree.file("hard/a.txt", "shared text that is fairly long\n");
    const auto other = tree / "hard/b.txt";
    ASSERT_EQ(::link(original.c_str(), other.c_str()), 0);
    const auto inode = statusOf(original).st_ino;
    for (const std::string text : {"short\n", "a much longer text than before, to grow the file\n"}) {
        auto written = saveOver(loadOrFail(other), text, other);
        ASSERT_TRUE(written) << written.error().errorDescription();
        EXPECT_EQ(tree.read("hard/a.txt"), text);
        EXPECT_EQ(statusOf(original).st_ino, inode);
        EXPECT_EQ(statusOf(other).st_ino, inode);
        EXPECT_EQ(statusOf(original).st_nlink, 2u);
        EXPECT_EQ(written->inode, inode);
    }
}

TEST(TextFileSave, KeepsModeOwnerExtendedAttributesAndAcls)
{
    TempTree tree;
    const auto path = tree.file("kept.txt", "before\n");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    if (::setxattr(path.c_str(), "user.comment", "kept", 4, 0) != 0)
        GTEST_SKIP() << "this file system has no user extended attributes";
    const bool haveAcl =
        test::haveProgram("setfacl") && test::run({"setfacl", "-m", "u:65534:rw", path.native()}).exitCode == 0;
    const bool chowned = ::geteuid() == 0 && ::chown(path.c_str(), test::nobodyId, test::nobodyId) == 0;
    const auto before = statusOf(path);

    auto saved = saveOver(loadOrFail(path), "after\n", path);
    ASSERT_TRUE(saved) << saved.error().errorDescription();
    const auto after = statusOf(path);
    EXPECT_NE(after.st_ino, before.st_ino) << "a lone file is replaced by a rename";
    EXPECT_EQ(after.st_mode, before.st_mode);
    char value[16] = {};
    EXPECT_EQ(::getxattr(path.c_str(), "user.comment", value, sizeof value), 4);
    EXPECT_STREQ(value, "kept");
    if (haveAcl) {
        EXPECT_NE(test::run({"getfacl", "-n", "-c", path.native()}).out.find("user:65534:rw-"), std::string::npos);
    }
    if (chowned) {
        EXPECT_EQ(after.st_uid, test::nobodyId);
        EXPECT_EQ(after.st_gid, test::nobodyId);
    }
    EXPECT_EQ(tree.read("kept.txt"), "after\n");

    // A new file gets the mode open() gives under the umask, not the temporary file's 0600.
    const mode_t mask = ::umask(022);
    ASSERT_TRUE(TextFile::save("x", tree / "new.txt", TextEncodingKind::utf8, LineEnding::lf));
    ::umask(mask);
    EXPECT_EQ(statusOf(tree / "new.txt").st_mode & 07777, 0644u);
}

TEST(TextFileSave, AFullVolumeLeavesTheOriginalIntactAndNoTemporaryFile)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "mounting a small tmpfs needs root";
    TempTree tree;
    const fs::path small = tree.folder("small");
    if (test::run({"mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", small.native()}).exitCode != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here";
    struct Unmount {
        fs::path at;
        ~Unmount() { (void)test::run({"umount", at.native()}); }
    } unmount{small};

    const std::string original(300 * 1024, 'o');
    const auto lone = small / "lone.txt";
    const auto linked = small / "linked.txt";
    for (const auto& path : {lone, linked}) {
        auto made = TextFile::save(original, path, TextEncodingKind::utf8, LineEnding::lf);
        ASSERT_TRUE(made) << made.error().errorDescription();
    }
    ASSERT_EQ(::link(linked.c_str(), (small / "other-name.txt").c_str()), 0);
    const auto names = namesIn(small);

    const std::string larger(900 * 1024, 'n');
    for (const auto& path : {lone, linked}) {
        SCOPED_TRACE(path.filename().native());
        auto saved = saveOver(loadOrFail(path), larger, path);
        ASSERT_FALSE(saved);
        EXPECT_TRUE(saved.error().isVolumeFull()) << saved.error().errorDescription();
        std::ifstream in(path);
        const std::string now((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_TRUE(now == original) << "the original changed";
        EXPECT_EQ(namesIn(small), names);
    }
}

TEST(TextFileSave, AReadOnlyFolderIsSavedInPlaceOrRefusedWithTheOriginalKept)
{
    TempTree tree;
    ::chmod(tree.root().c_str(), 0755);
    const auto folder = tree.folder("locked");
    const auto writable = tree.file("locked/writable.txt", "old\n");
    const auto readOnly = tree.file("locked/read-only.txt", "keep\n");
    ::chown(writable.c_str(), test::nobodyId, test::nobodyId);
    ::chmod(writable.c_str(), 0644);
    ::chmod(readOnly.c_str(), 0444);
    ::chmod(folder.c_str(), 0755); // owned by root: nobody cannot create entries in it
    const auto outcome = test::runUnprivileged([&]() -> std::string {
        std::string result;
        for (const auto& path : {writable, readOnly}) {
            auto loaded = TextFile::load(path);
            if (!loaded)
                return loaded.error().errorDescription();
            auto saved = saveOver(*loaded, "new\n", path);
            result += saved ? "saved;" : saved.error().errorDescription() + ";";
        }
        return result;
    });
    if (!outcome)
        GTEST_SKIP() << outcome.error();
    EXPECT_EQ(*outcome, "saved;Couldn’t save “read-only.txt”: Permission denied.;");
    EXPECT_EQ(tree.read("locked/writable.txt"), "new\n");
    EXPECT_EQ(tree.read("locked/read-only.txt"), "keep\n");
    EXPECT_EQ(namesIn(folder), (std::set<std::string>{"read-only.txt", "writable.txt"}));
}

} // namespace
} // namespace orbisk
