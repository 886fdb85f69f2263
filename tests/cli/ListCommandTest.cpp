#include <gtest/gtest.h>

#include "support/Processes.h"
#include "support/TempTree.h"

namespace orbisk {
namespace {

using test::TempTree;

test::ProcessResult list(std::vector<std::string> arguments, const std::vector<std::string>& environment = {})
{
    arguments.insert(arguments.begin(), {test::binary("orbisk-cli").native(), "list"});
    return test::run(arguments, {}, environment);
}

/// A folder with links, hidden entries, a name that is not UTF-8 and names that sort by number.
void populate(TempTree& tree)
{
    tree.folder("Photos");
    tree.folder("caf\xE9");
    tree.file("a10", "0123456789");
    tree.file("a2", "12");
    tree.file("A1");
    tree.file(".secret");
    tree.file("listed");
    tree.file(".hidden", "listed\n");
    tree.link("to-photos", "Photos");
    tree.link("dangling", "nowhere");
}

TEST(ListCommand, PrintsRawNamesInThePanesOrder)
{
    TempTree tree;
    populate(tree);
    const struct {
        std::vector<std::string> options;
        std::string out;
    } table[] = {
        {{}, "caf\xE9\nPhotos\nto-photos\nA1\na2\na10\ndangling\n"},
        {{"--descending"}, "to-photos\nPhotos\ncaf\xE9\ndangling\na10\na2\nA1\n"},
        {{"--no-folders-first"}, "A1\na2\na10\ncaf\xE9\ndangling\nPhotos\nto-photos\n"},
        {{"--hidden"}, "caf\xE9\nPhotos\nto-photos\n.hidden\n.secret\nA1\na2\na10\ndangling\nlisted\n"},
        {{"--sort", "size", "--descending", "--no-folders-first"},
         "a10\ndangling\na2\nA1\nto-photos\nPhotos\ncaf\xE9\n"},
        {{"--filter", "A"}, "caf\xE9\nA1\na2\na10\ndangling\n"},
        {{"--filter", "a?"}, "A1\na2\n"},
    };
    for (const auto& row : table) {
        auto arguments = row.options;
        SCOPED_TRACE(::testing::PrintToString(arguments));
        arguments.push_back("--names");
        arguments.push_back(tree.root());
        const auto result = list(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, row.out);
    }
}

TEST(ListCommand, PrintsOneReadableLinePerItem)
{
    TempTree tree;
    populate(tree);
    tree.setModificationTime("a10", 1'000'000'000);
    tree.setModificationTime("to-photos", 1'000'000'000);
    const auto result = list({tree.root()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("\n-              10  2001-09-09T01:46:40Z  a10\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("d@              -  2001-09-09T01:46:40Z  to-photos\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  caf\\xE9\n"), std::string::npos) << "a name that is not UTF-8 is shown escaped";
    EXPECT_NE(result.out.find("-@              7  "), std::string::npos) << "a dangling link has its own size";
}

TEST(ListCommand, SortsByKindFromTheMimeDatabaseItIsGiven)
{
    TempTree tree;
    tree.file("data/mime/globs2", "50:text/plain:*.txt\n50:image/png:*.png\n");
    tree.file("data/mime/text/plain.xml", "<mime-type><comment>plain text document</comment></mime-type>");
    tree.file("data/mime/image/png.xml", "<mime-type><comment>PNG image</comment></mime-type>");
    for (const char* name : {"b.txt", "a.png", "c.unknown", "d.txt"})
        tree.file(std::string("in/") + name);
    tree.folder("in/zfolder");
    const auto result = list({"--sort", "kind", "--names", (tree / "in").native()},
                             {"XDG_DATA_HOME=" + (tree / "data").native(), "XDG_DATA_DIRS=/nonexistent", "LANG=C"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "zfolder\nc.unknown\nb.txt\nd.txt\na.png\n")
        << "Document, plain text document, PNG image: in the order of their kind texts";
}

TEST(ListCommand, FailsWithAMessageOrTheUsage)
{
    TempTree tree;
    tree.file("file");
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* errContains;
    } table[] = {
        {{(tree / "missing").native()}, 1, "No such file or directory"},
        {{(tree / "file").native()}, 1, "Not a directory"},
        {{}, 2, "usage: orbisk-cli list"},
        {{"--sort", "type", tree.root()}, 2, "usage: orbisk-cli list"},
        {{"--filter"}, 2, "usage: orbisk-cli list"},
        {{"--bogus", tree.root()}, 2, "unknown option --bogus"},
        {{tree.root(), tree.root()}, 2, "only one folder"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(::testing::PrintToString(row.arguments));
        const auto result = list(row.arguments);
        EXPECT_EQ(result.exitCode, row.exitCode);
        EXPECT_NE(result.err.find(row.errContains), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
    }
    const auto dashed = tree.folder("-dashed");
    tree.file("-dashed/inside");
    const auto result =
        test::run({test::binary("orbisk-cli").native(), "list", "--names", "--", "-dashed"}, tree.root());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "inside\n");
}

} // namespace
} // namespace orbisk
