#include <gtest/gtest.h>

#include "support/TempTree.h"
#include "text/PagedFile.h"

#include <fstream>

namespace orbisk {
namespace {

using test::TempTree;
namespace fs = std::filesystem;

// Walking a file line by line forwards and back gives every line start exactly once, in order,
// whatever the lines look like.
TEST(PagedFile, StepsThroughLinesBothWays)
{
    TempTree tree;
    std::string contents;
    std::vector<std::int64_t> starts;
    for (int i = 0; i < 3000; ++i) {
        starts.push_back(static_cast<std::int64_t>(contents.size()));
        contents += std::string(static_cast<std::size_t>(i * 37 % 200), 'a' + static_cast<char>(i % 26));
        contents += '\n';
    }
    contents += "last line without a break";
    starts.push_back(static_cast<std::int64_t>(contents.size()) - 25);
    auto file = PagedFile::open(tree.file("lines.txt", contents));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->size(), static_cast<std::int64_t>(contents.size()));

    std::vector<std::int64_t> forward{0};
    while (forward.back() < file->size())
        forward.push_back(file->nextLineStart(forward.back()));
    forward.pop_back();
    EXPECT_EQ(forward, starts);

    for (std::size_t i = 1; i < starts.size(); ++i) {
        ASSERT_EQ(file->lineStart(starts[i] - 1), starts[i - 1]) << i;
        ASSERT_EQ(file->lineStart(starts[i]), starts[i]) << i;
    }
    EXPECT_EQ(file->stepLines(starts[10], 25), starts[35]);
    EXPECT_EQ(file->stepLines(starts[35], -25), starts[10]);
    EXPECT_EQ(file->stepLines(starts[3], -10), 0);
    EXPECT_EQ(file->read(starts[1], 4), contents.substr(static_cast<std::size_t>(starts[1]), 4));
}

TEST(PagedFile, CutsOverlongLinesIntoPiecesThatAgreeBothWays)
{
    TempTree tree;
    const auto piece = PagedFile::maximumLineLength;
    std::string contents = "short\n" + std::string(static_cast<std::size_t>(piece * 2 + 10), 'x') + "\nend\n";
    auto file = PagedFile::open(tree.file("long.txt", contents));
    ASSERT_TRUE(file);
    const std::int64_t expected[] = {0, 6, 6 + piece, 6 + 2 * piece, 6 + 2 * piece + 11};
    std::int64_t at = 0;
    for (std::size_t i = 1; i < std::size(expected); ++i) {
        at = file->nextLineStart(at);
        EXPECT_EQ(at, expected[i]) << i;
        EXPECT_EQ(file->lineStart(at - 1), expected[i - 1]) << i;
    }

    // A line with no break within a megabyte is cut at multiples counted from the file's start.
    std::string endless(3 << 20, 'y');
    auto single = PagedFile::open(tree.file("endless.txt", endless));
    ASSERT_TRUE(single);
    const std::int64_t middle = (2 << 20) + 12345;
    const auto start = single->lineStart(middle);
    EXPECT_EQ(start % piece, 0);
    EXPECT_LE(start, middle);
    EXPECT_EQ(single->nextLineStart(start), start + piece);
}

TEST(PagedFile, FindsAcrossReadBoundariesWithAndWithoutCase)
{
    TempTree tree;
    const std::int64_t boundary = 4 << 20; // the size of one search read
    std::string contents(static_cast<std::size_t>(boundary + 100), '.');
    contents.replace(static_cast<std::size_t>(boundary - 3), 7, "NeeDLE!");
    contents.replace(50, 6, "needle");
    auto file = PagedFile::open(tree.file("haystack.bin", contents));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->find("needle", 0, file->size(), true), 50);
    EXPECT_EQ(file->find("needle", 51, file->size(), true), std::nullopt);
    EXPECT_EQ(file->find("needle", 51, file->size(), false), boundary - 3);
    EXPECT_EQ(file->find("NeeDLE!", 0, file->size(), true), boundary - 3);
    EXPECT_EQ(file->find("NeeDLE!", 0, boundary + 3, true), std::nullopt) << "the end bound is exclusive";
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_EQ(file->find("needle", 0, file->size(), true, stopped.get_token()), std::nullopt);
}

TEST(PagedFile, OpensHugeFilesAtOnceAndFollowsGrowth)
{
    TempTree tree;
    const auto path = tree / "huge.log";
    {
        std::ofstream out(path);
        out << "first\n";
    }
    fs::resize_file(path, std::int64_t{20} << 30); // sparse: no disk, but a real 20 GB size
    {
        std::ofstream out(path, std::ios::app);
        out << "tail line\n";
    }
    auto file = PagedFile::open(path);
    ASSERT_TRUE(file);
    const auto size = file->size();
    EXPECT_EQ(file->read(0, 6), "first\n");
    EXPECT_EQ(file->read(size - 10, 100), "tail line\n");
    EXPECT_EQ(file->lineStart(size - 1), size - 10);
    EXPECT_EQ(file->stepLines(size - 10, 1), size);

    EXPECT_FALSE(file->refresh());
    {
        std::ofstream out(path, std::ios::app);
        out << "grown\n";
    }
    EXPECT_TRUE(file->refresh());
    EXPECT_EQ(file->size(), size + 6);
    EXPECT_EQ(file->read(size, 6), "grown\n");

    auto memory = PagedFile::fromBytes("in\nmemory");
    EXPECT_EQ(memory.nextLineStart(0), 3);
    EXPECT_EQ(memory.read(3, 100), "memory");
}

} // namespace
} // namespace orbisk
