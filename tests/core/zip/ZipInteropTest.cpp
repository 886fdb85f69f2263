#include <gtest/gtest.h>

#include "ZipTestSupport.h"
#include "core/operations/UndoTestSupport.h"
#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;
using Picture = std::map<std::string, std::string>;

const std::vector<std::string> utf8Locale = {"LC_ALL=C.UTF-8"};

std::string noise(std::size_t size)
{
    std::string data(size, '\0');
    unsigned state = 12345;
    for (auto& c : data)
        c = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
    return data;
}

// The awkward tree: an empty folder, hidden files, relative and dangling links, an empty file,
// incompressible data and a long run of zeros; with names, a decomposed accent and bytes that
// are not UTF-8.
void fill(TempTree& tree, const std::string& top, bool awkwardNames, bool linksAndEmptyFiles)
{
    tree.file(top + "/text.txt", "some text\n");
    tree.file(top + "/sub/.hidden", "hidden\n");
    tree.folder(top + "/empty");
    tree.file(top + "/random.bin", noise(300000));
    tree.file(top + "/zeros.bin", std::string(3'000'000, '\0'));
    if (linksAndEmptyFiles) {
        tree.file(top + "/nothing", "");
        tree.link(top + "/sub/up", "../text.txt");
        tree.link(top + "/dangling", "gone/away");
    }
    if (awkwardNames) {
        tree.file(top + "/Cafe\xCC\x81.txt", "decomposed\n");
        tree.file(top + "/latin\xE9.txt", "latin-1\n");
    }
}

// The source as it should come back: decomposed names composed.
Picture expectedFrom(const fs::path& source)
{
    Picture picture;
    for (const auto& [original, contents] : test::picture(source)) {
        std::string name = original;
        if (const auto at = name.find("e\xCC\x81"); at != std::string::npos)
            name.replace(at, 3, "\xC3\xA9");
        picture[name] = contents;
    }
    return picture;
}

TEST(ZipInterop, OurArchivesPassEveryOtherReaderAndComeBackByteForByte)
{
    TempTree tree;
    fill(tree, "src/Tree", true, true);
    const auto archive = tree / "ours.zip";
    ASSERT_TRUE(test::compress({tree / "src/Tree"}, archive).isCompleteSuccess());
    const Picture expected = expectedFrom(tree / "src/Tree");

    const auto extracted = test::extract(archive, tree.folder("ours"));
    ASSERT_TRUE(extracted.isCompleteSuccess()) << testing::PrintToString(test::messages(extracted));
    EXPECT_EQ(test::picture(tree / "ours/Tree"), expected);

    int peers = 0;
    if (test::haveProgram("unzip")) {
        ++peers;
        const auto tested = test::run({"unzip", "-t", archive.native()}, {}, utf8Locale);
        EXPECT_EQ(tested.exitCode, 0) << tested.out << tested.err;
        const auto out = tree.folder("unzip");
        const auto unpacked = test::run({"unzip", "-q", archive.native(), "-d", out.native()}, {}, utf8Locale);
        EXPECT_EQ(unpacked.exitCode, 0) << unpacked.err;
        EXPECT_EQ(test::picture(out / "Tree"), expected) << "unzip reads the same tree";
    }
    if (test::haveProgram("7z")) {
        ++peers;
        const auto tested = test::run({"7z", "t", archive.native()}, {}, utf8Locale);
        EXPECT_EQ(tested.exitCode, 0) << tested.out << tested.err;
    }
    if (test::haveProgram("bsdtar")) {
        ++peers;
        const auto listed = test::run({"bsdtar", "-tf", archive.native()}, {}, utf8Locale);
        EXPECT_EQ(listed.exitCode, 0) << listed.err;
        const auto out = tree.folder("bsdtar");
        const auto unpacked = test::run({"bsdtar", "-xf", archive.native(), "-C", out.native()}, {}, utf8Locale);
        EXPECT_EQ(unpacked.exitCode, 0) << unpacked.err;
        EXPECT_EQ(test::picture(out / "Tree"), expected) << "bsdtar reads the same tree";
    }
    if (test::haveProgram("python3")) {
        ++peers;
        const auto tested = test::run({"python3", "-c",
                                       "import sys, zipfile\n"
                                       "z = zipfile.ZipFile(sys.argv[1])\n"
                                       "assert z.testzip() is None\n"
                                       "print(len(z.infolist()))\n",
                                       archive.native()});
        EXPECT_EQ(tested.exitCode, 0) << tested.err;
        EXPECT_EQ(tested.out, "12\n") << "every member listed";
    }
    if (peers == 0)
        GTEST_SKIP() << "none of unzip, 7z, bsdtar, python3 is installed";
}

struct Peer {
    std::string name;
    std::string program;
    std::string command; // run by sh in the folder holding Tree; writes ../peer.zip
    bool linksAndEmptyFiles = true;
    bool awkwardNames = false;
};

TEST(ZipInterop, ArchivesOfOtherWritersExtractByteForByte)
{
    const Peer peers[] = {
        {"zip", "zip", "zip -qry ../peer.zip Tree", true, true},
        {"zip with data descriptors", "zip", "zip -qr -fd ../peer.zip Tree", false},
        {"bsdtar", "bsdtar", "bsdtar --format zip -cf ../peer.zip Tree"},
        {"7z", "7z", "7z a -snl -bd ../peer.zip Tree >/dev/null"},
        {"python to a pipe", "python3",
         "python3 -c 'import os, sys, zipfile\n"
         "z = zipfile.ZipFile(sys.stdout.buffer, \"w\", zipfile.ZIP_DEFLATED)\n"
         "for root, dirs, files in os.walk(\"Tree\"):\n"
         "    z.write(root)\n"
         "    for name in files:\n"
         "        z.write(os.path.join(root, name))\n"
         "z.close()' | cat > ../peer.zip",
         false},
    };
    for (const auto& peer : peers) {
        SCOPED_TRACE(peer.name);
        if (!test::haveProgram(peer.program))
            continue;
        TempTree tree;
        fill(tree, "src/Tree", peer.awkwardNames, peer.linksAndEmptyFiles);
        const auto made = test::run({"sh", "-c", peer.command}, tree / "src", utf8Locale);
        ASSERT_EQ(made.exitCode, 0) << made.err;
        const auto report = test::extract(tree / "peer.zip", tree.folder("out"));
        EXPECT_TRUE(report.isCompleteSuccess()) << testing::PrintToString(test::messages(report));
        EXPECT_EQ(test::picture(tree / "out/Tree"), test::picture(tree / "src/Tree"));
    }
}

TEST(ZipInterop, AStreamedArchiveWithSizesOnlyInTheCentralDirectoryExtracts)
{
    if (!test::haveProgram("zip"))
        GTEST_SKIP() << "zip is not installed";
    TempTree tree;
    // zip reading standard input writes a ZIP64 extra in the local header only, and a data
    // descriptor; the central directory has the sizes.
    const auto made =
        test::run({"sh", "-c", "printf 'streamed text\\n%.0s' $(seq 1 2000) | zip -q > s.zip"}, tree.root());
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const auto report = test::extract(tree / "s.zip", tree.folder("out"));
    ASSERT_TRUE(report.isCompleteSuccess()) << testing::PrintToString(test::messages(report));
    std::string expected;
    for (int i = 0; i < 2000; ++i)
        expected += "streamed text\n";
    EXPECT_EQ(tree.read("out/-"), expected);
}

} // namespace
} // namespace orbisk
