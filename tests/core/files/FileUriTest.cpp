// File URLs and uri-lists as other desktop programs write and read them.
#include "files/FileUri.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orbisk {
namespace {

using std::filesystem::path;

TEST(FileUri, PathsTravelByteExactThroughTheirUrl)
{
    const std::vector<std::string> paths = {
        "/home/u/plain.txt",
        "/home/u/with space & 100%.txt",
        "/tmp/caf\xC3\xA9",
        "/tmp/not-utf8-\xE9\xFF",
        "/tmp/line\nbreak",
        "/tmp/hash#and?query",
        "/",
    };
    for (const auto& original : paths) {
        SCOPED_TRACE(original);
        const auto uri = FileUri::fromPath(original);
        EXPECT_EQ(uri.rfind("file:///", 0), 0u);
        // Only plain ASCII may appear, or another program would read a different name.
        for (const char c : uri.substr(7))
            EXPECT_TRUE(static_cast<unsigned char>(c) < 0x80 && c != ' ' && c != '\n' && c != '#' && c != '?');
        EXPECT_EQ(FileUri::toPath(uri), path(original));
    }
}

TEST(FileUri, ReadsWhatOtherProgramsWriteAndRefusesTheRest)
{
    const std::vector<std::pair<std::string, std::optional<path>>> cases = {
        {"file:///tmp/a%20b", path("/tmp/a b")},
        {"FILE:///tmp/x", path("/tmp/x")},
        {"file://localhost/tmp/x", path("/tmp/x")},
        {"file://LocalHost/tmp/x", path("/tmp/x")},
        {"file:///tmp/%e9", path("/tmp/\xE9")},
        {"file:///tmp/x#fragment", path("/tmp/x")},
        {"file://otherhost/tmp/x", std::nullopt},
        {"http://example.org/x", std::nullopt},
        {"file:", std::nullopt},
        {"file://", std::nullopt},
        {"file:///tmp/%zz", std::nullopt},
        {"file:///tmp/trailing%4", std::nullopt},
        {"file:///tmp/nul%00byte", std::nullopt},
        {"/tmp/plain/path", std::nullopt},
    };
    for (const auto& [uri, expected] : cases) {
        SCOPED_TRACE(uri);
        EXPECT_EQ(FileUri::toPath(uri), expected);
    }
}

TEST(FileUri, ListsKeepOrderAndSkipCommentsBlanksAndForeignUrls)
{
    const std::vector<path> paths = {"/a/one", "/b/tw\xE9", "/c/three"};
    const auto list = FileUri::listFromPaths(paths);
    EXPECT_EQ(list, "file:///a/one\r\nfile:///b/tw%E9\r\nfile:///c/three\r\n");
    EXPECT_EQ(FileUri::pathsFromList(list), paths);

    const std::string mixed = "# a comment\nfile:///x\n\nhttps://example.org/y\r\nfile://localhost/z";
    EXPECT_EQ(FileUri::pathsFromList(mixed), (std::vector<path>{"/x", "/z"}));
    EXPECT_TRUE(FileUri::pathsFromList("").empty());
}

} // namespace
} // namespace orbisk
