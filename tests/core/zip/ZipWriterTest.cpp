#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <thread>

#include "ZipTestSupport.h"
#include "support/TempTree.h"
#include "zip/ByteWriter.h"
#include "zip/CRC32.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

// One member as this test reads it from the raw bytes, independently of ZipReader.
struct Member {
    std::string name;
    std::uint16_t localFlags = 0, centralFlags = 0, localMethod = 0, centralMethod = 0, madeBy = 0, needed = 0;
    std::uint32_t localCrc = 0, centralCrc = 0, localSize = 0, centralSize = 0, uncompressed = 0, attributes = 0;
    std::uint16_t localExtra = 0, centralExtra = 0;
    std::string data;
};

std::vector<Member> parse(const std::string& zip)
{
    const std::size_t end = zip.size() - 22;
    EXPECT_EQ(le32(zip, end), 0x06054b50u) << "the end record is last, with no comment";
    const std::uint16_t count = le16(zip, end + 10);
    EXPECT_EQ(le16(zip, end + 8), count);
    std::size_t at = le32(zip, end + 16);
    EXPECT_EQ(at + le32(zip, end + 12), end);
    std::vector<Member> members;
    for (std::uint16_t i = 0; i < count; ++i) {
        Member m;
        EXPECT_EQ(le32(zip, at), 0x02014b50u);
        m.madeBy = le16(zip, at + 4);
        m.needed = le16(zip, at + 6);
        m.centralFlags = le16(zip, at + 8);
        m.centralMethod = le16(zip, at + 10);
        m.centralCrc = le32(zip, at + 16);
        m.centralSize = le32(zip, at + 20);
        m.uncompressed = le32(zip, at + 24);
        const std::size_t nameLength = le16(zip, at + 28);
        m.centralExtra = le16(zip, at + 30);
        m.attributes = le32(zip, at + 38);
        const std::size_t local = le32(zip, at + 42);
        m.name = zip.substr(at + 46, nameLength);
        EXPECT_EQ(le32(zip, local), 0x04034b50u);
        EXPECT_EQ(le16(zip, local + 4), 20);
        m.localFlags = le16(zip, local + 6);
        m.localMethod = le16(zip, local + 8);
        m.localCrc = le32(zip, local + 14);
        m.localSize = le32(zip, local + 18);
        EXPECT_EQ(le32(zip, local + 22), m.uncompressed);
        EXPECT_EQ(zip.substr(local + 30, le16(zip, local + 26)), m.name);
        m.localExtra = le16(zip, local + 28);
        m.data = zip.substr(local + 30 + nameLength + m.localExtra, m.centralSize);
        members.push_back(m);
        at += 46 + nameLength + m.centralExtra + le16(zip, at + 32);
    }
    return members;
}

TEST(ZipWriter, WritesEveryHeaderFieldAsLaidOutForFilesFoldersAndLinks)
{
    TempTree tree;
    tree.file("top/file.txt", "hello hello hello hello");
    tree.folder("top/empty");
    tree.file("top/.hidden", "");
    tree.link("top/link", "file.txt");
    tree.link("top/dangling", "../nowhere");
    fs::permissions(tree / "top/file.txt", fs::perms(0640));
    const auto report = test::compress({tree / "top"}, tree / "out.zip");
    ASSERT_TRUE(report.isCompleteSuccess()) << testing::PrintToString(test::messages(report));

    const auto members = parse(test::bytesOf(tree / "out.zip"));
    std::map<std::string, Member> byName;
    std::vector<std::string> order;
    for (const auto& m : members) {
        byName[m.name] = m;
        order.push_back(m.name);
        SCOPED_TRACE(m.name);
        EXPECT_EQ(m.madeBy, 0x0314);
        EXPECT_EQ(m.needed, 20);
        EXPECT_EQ(m.localFlags, 0x0800) << "UTF-8 names, no data descriptor";
        EXPECT_EQ(m.centralFlags, 0x0800);
        EXPECT_EQ(m.localMethod, m.centralMethod);
        EXPECT_EQ(m.localCrc, m.centralCrc) << "patched in place";
        EXPECT_EQ(m.localSize, m.centralSize);
        EXPECT_EQ(m.localExtra, 0);
        EXPECT_EQ(m.centralExtra, 0);
    }
    ASSERT_EQ(members.size(), 6u);
    EXPECT_EQ(order.front(), "top/") << "a folder comes before its contents";

    const auto& empty = byName.at("top/empty/");
    EXPECT_EQ(empty.centralMethod, 0);
    EXPECT_EQ(empty.centralCrc, 0u);
    EXPECT_EQ(empty.uncompressed, 0u);
    EXPECT_EQ(empty.attributes >> 16 & S_IFMT, unsigned{S_IFDIR});
    EXPECT_EQ(empty.attributes & 0x10, 0x10u);

    const auto& file = byName.at("top/file.txt");
    EXPECT_EQ(file.centralMethod, 8);
    EXPECT_EQ(file.attributes >> 16, unsigned{S_IFREG | 0640});
    EXPECT_EQ(file.centralCrc, CRC32::of("hello hello hello hello"));
    EXPECT_EQ(file.uncompressed, 23u);
    EXPECT_EQ(byName.at("top/.hidden").centralMethod, 8) << "even an empty file is deflated";

    for (const auto& [name, target] : {std::pair{"top/link", "file.txt"}, {"top/dangling", "../nowhere"}}) {
        const auto& link = byName.at(name);
        EXPECT_EQ(link.centralMethod, 0);
        EXPECT_EQ(link.attributes >> 16 & S_IFMT, unsigned{S_IFLNK});
        EXPECT_EQ(link.data, target) << "a link is its text, never the file it points to";
        EXPECT_EQ(link.centralCrc, CRC32::of(target));
    }
}

TEST(ZipWriter, StoresComposedUtf8NamesAndKeepsForeignBytesWithoutTheFlag)
{
    TempTree tree;
    tree.file("Cafe\xCC\x81.txt", "decomposed");
    tree.file("latin\xE9.txt", "not UTF-8");
    const auto report = test::compress({tree / "Cafe\xCC\x81.txt", tree / "latin\xE9.txt"}, tree / "names.zip");
    ASSERT_TRUE(report.isCompleteSuccess());
    const auto members = parse(test::bytesOf(tree / "names.zip"));
    ASSERT_EQ(members.size(), 2u);
    EXPECT_EQ(members[0].name, "Caf\xC3\xA9.txt");
    EXPECT_EQ(members[0].centralFlags, 0x0800);
    EXPECT_EQ(members[1].name, "latin\xE9.txt");
    EXPECT_EQ(members[1].centralFlags, 0);
}

TEST(ZipWriter, NeverTouchesAnExistingFileAndRefusesLimitsBeforeWriting)
{
    TempTree tree;
    tree.file("a.txt", "a");
    tree.file("taken.zip", "precious");
    auto report = test::compress({tree / "a.txt"}, tree / "taken.zip");
    ASSERT_EQ(report.failures.size(), 1u);
    EXPECT_NE(report.failures[0].message().find("Couldn’t create the archive “taken.zip”"), std::string::npos);
    EXPECT_EQ(tree.read("taken.zip"), "precious");
    EXPECT_TRUE(report.undoChanges.empty());

    // 4 GB of holes: refused from its size alone, before an archive exists.
    {
        const int fd = ::open((tree / "huge.img").c_str(), O_CREAT | O_WRONLY, 0644);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::ftruncate(fd, off_t{0xFFFFFFFF}), 0);
        ::close(fd);
    }
    report = test::compress({tree / "a.txt", tree / "huge.img"}, tree / "huge.zip");
    ASSERT_TRUE(report.abortReason);
    EXPECT_EQ(*report.abortReason, "“huge.img” is 4 GB or larger, which needs ZIP64 (not supported).");
    EXPECT_FALSE(fs::exists(tree / "huge.zip"));
}

TEST(ZipWriter, RefusesExactly65535EntriesButWrites65534)
{
    // Memory-backed when the machine has it: tens of thousands of files are slow on a disk.
    TempTree tree(fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::path());
    const auto many = tree.folder("many");
    // The folder itself is one entry: 65,533 files make 65,534.
    for (int i = 0; i < 65533; ++i) {
        const int fd = ::open((many / std::to_string(i)).c_str(), O_CREAT | O_WRONLY, 0644);
        ASSERT_GE(fd, 0);
        ::close(fd);
    }
    auto report = test::compress({many}, tree / "fits.zip");
    ASSERT_TRUE(report.isCompleteSuccess());
    EXPECT_EQ(parse(test::bytesOf(tree / "fits.zip")).size(), 65534u);

    ::close(::open((many / "one-more").c_str(), O_CREAT | O_WRONLY, 0644));
    report = test::compress({many}, tree / "too-many.zip");
    EXPECT_EQ(report.abortReason,
              "ZIP64 archives (larger than 4 GB or with more than 65,535 entries) are not supported.");
    EXPECT_FALSE(fs::exists(tree / "too-many.zip"));
}

TEST(ZipWriter, LeavesOutWhatCannotBeArchivedAndWritesTheRest)
{
    TempTree tree;
    tree.file("top/good.txt", "good");
    tree.fifo("top/pipe");
    tree.file("top/future.txt", "from the future");
    // 2110-01-01: past what the DOS date field can hold.
    tree.setModificationTime("top/future.txt", 4'418'064'000);
    const auto report = test::compress({tree / "top", tree / "missing.txt"}, tree / "out.zip");
    const auto texts = test::messages(report);
    ASSERT_EQ(texts.size(), 3u) << testing::PrintToString(texts);
    EXPECT_NE(std::ranges::find(texts, "“missing.txt” no longer exists. It may have been moved or deleted by another "
                                       "application."),
              texts.end())
        << testing::PrintToString(texts);
    const auto members = parse(test::bytesOf(tree / "out.zip"));
    std::vector<std::string> names;
    for (const auto& m : members)
        names.push_back(m.name);
    EXPECT_EQ(names, (std::vector<std::string>{"top/", "top/good.txt"})) << "the refused members leave no bytes behind";
    EXPECT_EQ(report.completed.size(), 1u);
}

TEST(ZipWriter, CancellingLeavesNoArchiveBehind)
{
    TempTree tree;
    std::string noise(4 << 20, '\0');
    unsigned state = 1;
    for (auto& c : noise)
        c = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
    for (int i = 0; i < 12; ++i)
        tree.file("big/" + std::to_string(i), noise);

    CancellationToken token;
    OperationProgressTracker progress;
    std::jthread canceller([&](const std::stop_token& stop) {
        while (!stop.stop_requested() && progress.snapshot().completedItems < 3)
            std::this_thread::yield();
        token.cancel();
    });
    const auto report = ZipWriter::compress({tree / "big"}, tree / "big.zip", token, progress);
    EXPECT_TRUE(report.cancelled);
    EXPECT_TRUE(report.failures.empty());
    EXPECT_TRUE(report.undoChanges.empty());
    EXPECT_FALSE(fs::exists(tree / "big.zip"));
    EXPECT_EQ(tree.read("big/11"), noise) << "inputs untouched";
}

} // namespace
} // namespace orbisk
