#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "CopyTestSupport.h"
#include "platform/FileCopier.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

const CopyOptions smallChunks{.chunkBytes = 64 * 1024, .firstMethod = CopyMethod::copyFileRange};

TEST(FileCopierSafety, ATakenDestinationIsNeverTouched)
{
    enum class Kind { file, danglingLink, folder };
    for (const auto& [kind, name] : {std::pair{Kind::file, "file"}, std::pair{Kind::danglingLink, "dangling link"},
                                     std::pair{Kind::folder, "folder"}}) {
        SCOPED_TRACE(name);
        TempTree tree;
        tree.file("source", "new contents");
        tree.link("link", "source");
        switch (kind) {
        case Kind::file: tree.file("target", "old contents"); break;
        case Kind::danglingLink: tree.link("target", "nowhere"); break;
        case Kind::folder: tree.file("target/inside", "old contents"); break;
        }
        const auto before = test::namesIn(tree.root());

        auto file = FileCopier::copyFile(tree / "source", tree / "target");
        ASSERT_FALSE(file);
        EXPECT_EQ(file.error().code, EEXIST);
        auto link = FileCopier::copyLink(tree / "link", tree / "target");
        ASSERT_FALSE(link);
        EXPECT_EQ(link.error().code, EEXIST);
        auto folder = FileCopier::createFolder(tree / "target");
        ASSERT_FALSE(folder);
        EXPECT_EQ(folder.error().code, EEXIST);

        EXPECT_EQ(test::namesIn(tree.root()), before);
        EXPECT_EQ(tree.read(kind == Kind::folder ? "target/inside" : "target"),
                  kind == Kind::danglingLink ? "" : "old contents");
        if (kind == Kind::danglingLink) {
            EXPECT_EQ(fs::read_symlink(tree / "target"), "nowhere");
        }
    }
}

// The name is taken while the copy runs: the final rename must refuse, not replace, and take its
// temporary entry away.
TEST(FileCopierSafety, ADestinationThatAppearsDuringTheCopyWinsAndNoTemporaryEntryRemains)
{
    TempTree tree;
    tree.file("source", test::randomBytes(512 * 1024));
    bool created = false;
    auto progress = [&](std::int64_t done) {
        if (done > 0 && !created) {
            tree.file("target", "someone else");
            created = true;
        }
        return CopyControl::proceed;
    };
    auto result = FileCopier::copyFile(tree / "source", tree / "target", progress, smallChunks);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().step, CopyStep::rename);
    EXPECT_EQ(result.error().code, EEXIST);
    EXPECT_EQ(tree.read("target"), "someone else");
    EXPECT_EQ(test::namesIn(tree.root()), (std::vector<std::string>{"source", "target"}));
}

TEST(FileCopierSafety, WhileCopyingNoEntryOrOnlyARecognisableHiddenOneExists)
{
    for (const bool unnamedFile : {true, false}) {
        SCOPED_TRACE(unnamedFile ? "unnamed file" : "hidden temporary name");
        TempTree tree;
        tree.file("source", test::randomBytes(256 * 1024));
        const fs::path into = tree.folder("into");
        std::vector<std::vector<std::string>> seen;
        auto progress = [&](std::int64_t done) {
            if (done > 0)
                seen.push_back(test::namesIn(into));
            return CopyControl::proceed;
        };
        CopyOptions options = smallChunks;
        options.unnamedFile = unnamedFile;
        ASSERT_TRUE(FileCopier::copyFile(tree / "source", into / "copy", progress, options));
        ASSERT_FALSE(seen.empty());
        for (const auto& names : seen) {
            // An unnamed file has no entry until it is complete.
            ASSERT_EQ(names.size(), unnamedFile ? 0U : 1U);
            if (!unnamedFile) {
                EXPECT_TRUE(FileCopier::isTemporaryName(names[0])) << names[0];
                EXPECT_TRUE(names[0].starts_with(".copy.ob-copying-")) << names[0];
            }
        }
        EXPECT_EQ(test::namesIn(into), (std::vector<std::string>{"copy"}));
        EXPECT_EQ(tree.read("into/copy"), tree.read("source"));
    }
}

TEST(FileCopierSafety, CancellingLeavesNeitherTheCopyNorItsTemporaryEntry)
{
    // Stopping at the first call means before anything was created; later calls are mid-file.
    for (const int stopAtCall : {1, 2, 5}) {
        SCOPED_TRACE("stop at call " + std::to_string(stopAtCall));
        TempTree tree;
        tree.file("large", test::randomBytes(1 << 20));
        const fs::path into = tree.folder("into");
        int calls = 0;
        auto progress = [&](std::int64_t) { return ++calls == stopAtCall ? CopyControl::stop : CopyControl::proceed; };
        auto result = FileCopier::copyFile(tree / "large", into / "large", progress, smallChunks);
        ASSERT_TRUE(result) << test::describe(result.error());
        EXPECT_EQ(*result, CopyOutcome::cancelled);
        EXPECT_EQ(calls, stopAtCall);
        EXPECT_TRUE(test::namesIn(into).empty());
    }
}

TEST(FileCopierSafety, DevicesSocketsAndFifosAreRefusedWithoutBlocking)
{
    TempTree tree;
    tree.fifo("fifo");
    const int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string socketPath = (tree / "socket").native();
    ASSERT_LT(socketPath.size(), sizeof(address.sun_path));
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    ASSERT_EQ(::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    // A device of our own where we may make one (root), so that the test does not depend on
    // the state of /dev.
    const fs::path device = tree / "null";
    std::vector<fs::path> specials = {tree / "fifo", tree / "socket"};
    if (::mknod(device.c_str(), S_IFCHR | 0666, ::makedev(1, 3)) == 0)
        specials.push_back(device);
    for (const fs::path& special : specials) {
        SCOPED_TRACE(special.native());
        auto result = FileCopier::copyFile(special, tree / "copy");
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().kind, CopyError::Kind::unsupportedFileType);
        EXPECT_FALSE(tree.exists("copy"));
    }
    ::close(sock);
}

// A caller may hand over the status it took itself. That status decides nothing on its own:
// an entry inspected as a regular file but replaced by a fifo before the copy opens it is still
// refused without blocking, and one inspected as special is refused without being opened.
TEST(FileCopierSafety, AStatusTakenByTheCallerCannotSmuggleInASpecialFile)
{
    TempTree tree;
    tree.file("regular", "contents");
    tree.fifo("fifo");
    struct stat regular {};
    struct stat fifo {};
    ASSERT_EQ(::lstat((tree / "regular").c_str(), &regular), 0);
    ASSERT_EQ(::lstat((tree / "fifo").c_str(), &fifo), 0);
    struct Case {
        const char* entry;
        const struct stat* inspected;
        const char* name;
    };
    for (const Case& c : {Case{"fifo", &regular, "a fifo inspected as a regular file"},
                          Case{"regular", &fifo, "a regular file inspected as a fifo"}}) {
        SCOPED_TRACE(c.name);
        auto result = FileCopier::copyFile(tree / c.entry, tree / "copy", {}, {}, c.inspected);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().kind, CopyError::Kind::unsupportedFileType);
        EXPECT_FALSE(tree.exists("copy"));
    }
}

TEST(FileCopierSafety, LinksAreCopiedAsLinksAndNeverFollowed)
{
    TempTree tree;
    tree.file("real", "data");
    const std::vector<std::string> targets = {"real", "/nonexistent/dangling", "../up/and\xE9\xFF"};
    for (std::size_t i = 0; i < targets.size(); ++i) {
        SCOPED_TRACE(targets[i]);
        const std::string name = "link" + std::to_string(i);
        tree.link(name, targets[i]);
        tree.setModificationTime(name, 1'500'000'000, 123'456'789);
        ASSERT_TRUE(FileCopier::copyLink(tree / name, tree / (name + " copy")));
        EXPECT_EQ(fs::read_symlink(tree / (name + " copy")).native(), targets[i]);
        EXPECT_EQ(test::statusOf(tree / (name + " copy")).st_mtim.tv_nsec, 123'456'789);

        auto asFile = FileCopier::copyFile(tree / name, tree / (name + " followed"));
        ASSERT_FALSE(asFile);
        EXPECT_EQ(asFile.error().code, ELOOP);
        EXPECT_FALSE(tree.exists(name + " followed"));
    }
    EXPECT_FALSE(FileCopier::copyLink(tree / "real", tree / "not a link"));
    EXPECT_FALSE(tree.exists("not a link"));
}

TEST(FileCopierSafety, NamesAreKeptByteForByteUpToTheLongestAllowed)
{
    const std::string longAscii(255, 'a');
    std::string longAccented;
    while (longAccented.size() + 2 <= 255)
        longAccented += "\xC3\xA9"; // é
    longAccented += "z";
    for (const std::string& name : {std::string("caf\xE9 \xFF\xFE"), longAscii, longAccented}) {
        SCOPED_TRACE(name.size());
        TempTree tree;
        tree.file(name, name);
        const std::string copyName = name.substr(0, name.size() - 1) + "!";
        auto result = FileCopier::copyFile(tree / name, tree / copyName);
        ASSERT_TRUE(result) << test::describe(result.error());
        EXPECT_EQ(tree.read(copyName), name);

        const std::string temporary = FileCopier::temporaryName(name);
        EXPECT_LE(temporary.size(), 255U);
        EXPECT_TRUE(FileCopier::isTemporaryName(temporary));
        const std::string kept = temporary.substr(1, temporary.find(".ob-copying-", 1) - 1);
        EXPECT_TRUE(name.starts_with(kept));
        EXPECT_GE(kept.size(), std::min<std::size_t>(name.size(), 230));
        if (name == longAccented) {
            EXPECT_EQ(kept.size() % 2, 0U) << "cut inside a character";
        }
    }
    EXPECT_FALSE(FileCopier::isTemporaryName("notes.ob-copying-1234567"));
    EXPECT_FALSE(FileCopier::isTemporaryName(".notes.ob-copying-1234567Z"));
}

TEST(FileCopierSafety, MissingPlacesAreReportedWithTheirStep)
{
    TempTree tree;
    tree.file("source", "x");
    auto noSource = FileCopier::copyFile(tree / "absent", tree / "copy");
    ASSERT_FALSE(noSource);
    EXPECT_EQ(noSource.error(), CopyError::system(CopyStep::inspectSource, ENOENT, tree / "absent"));
    auto noFolder = FileCopier::copyFile(tree / "source", tree / "absent/copy");
    ASSERT_FALSE(noFolder);
    EXPECT_EQ(noFolder.error(), CopyError::system(CopyStep::createDestination, ENOENT, tree / "absent/copy"));
}

} // namespace
} // namespace orbisk
