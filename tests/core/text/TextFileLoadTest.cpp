#include <gtest/gtest.h>

#include "support/TempTree.h"
#include "text/PagedFile.h"
#include "text/TextFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <future>

namespace orbisk {
namespace {

using test::TempTree;
using namespace std::string_literals;
namespace fs = std::filesystem;

// Bytes this process has read through read-like calls so far (/proc/self/io "rchar").
std::int64_t bytesReadSoFar()
{
    std::ifstream io("/proc/self/io");
    std::string key;
    std::int64_t value = 0;
    while (io >> key >> value)
        if (key == "rchar:")
            return value;
    return -1;
}

TEST(TextFileLoad, EveryEncodingAndLineEndingRoundTripsByteForByte)
{
    TempTree tree;
    const std::string texts[] = {"first line\nsecond \xC3\xA9 \xF0\x9F\x98\x80\nlast", "with final newline\n\n", ""};
    for (const auto encoding : allTextEncodingKinds) {
        for (const auto ending : allLineEndings) {
            for (const auto& text : texts) {
                SCOPED_TRACE(std::string(rawValue(encoding)) + " " + std::string(rawValue(ending)) + " " +
                             testing::PrintToString(text));
                const auto path = tree / "file.txt";
                fs::remove(path);
                auto saved = TextFile::save(text, path, encoding, ending);
                ASSERT_TRUE(saved) << saved.error().errorDescription();
                const auto expectedBytes = TextFile::encode(text, encoding, ending);
                ASSERT_TRUE(expectedBytes);
                EXPECT_EQ(tree.read("file.txt"), *expectedBytes);

                auto loaded = TextFile::load(path);
                ASSERT_TRUE(loaded) << loaded.error().errorDescription();
                EXPECT_EQ(loaded->text, text);
                EXPECT_EQ(loaded->stamp, *saved);
                EXPECT_FALSE(loaded->hasMixedLineEndings);
                // An empty UTF-8 file has no mark to tell it from plain UTF-8; a text without a
                // break has no ending to tell, and reads as LF.
                if (!(text.empty() && encoding == TextEncodingKind::utf8BOM)) {
                    EXPECT_EQ(loaded->encoding, encoding);
                }
                if (text.find('\n') != std::string::npos) {
                    EXPECT_EQ(loaded->lineEnding, ending);
                }
            }
        }
    }
}

TEST(TextFileLoad, MixedEndingsLoadAsTheDominantStyleAndSaveUniformly)
{
    TempTree tree;
    const auto path = tree.file("mixed.txt", "one\r\ntwo\r\nthree\nfour");
    auto loaded = TextFile::load(path);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->text, "one\ntwo\nthree\nfour");
    EXPECT_EQ(loaded->lineEnding, LineEnding::crlf);
    EXPECT_TRUE(loaded->hasMixedLineEndings);
    ASSERT_TRUE(TextFile::save(loaded->text, path, loaded->encoding, loaded->lineEnding, loaded->stamp));
    EXPECT_EQ(tree.read("mixed.txt"), "one\r\ntwo\r\nthree\r\nfour");
}

TEST(TextFileLoad, RefusesWhatItWouldCorrupt)
{
    TempTree tree;
    struct Case {
        const char* name;
        std::string bytes;
        TextFileError::Kind kind;
    };
    const Case cases[] = {
        {"latin1.txt", "caf\xE9\n", TextFileError::Kind::unsupportedEncoding},
        {"nul.bin", "\0"s, TextFileError::Kind::binary},
        {"elf",
         "\x7F"
         "ELF\x02\x01\x01\0\0\0"s,
         TextFileError::Kind::binary},
        {"broken16.txt", "\xFF\xFE\x00\xD8"s, TextFileError::Kind::unsupportedEncoding},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto path = tree.file(c.name, c.bytes);
        auto loaded = TextFile::load(path);
        ASSERT_FALSE(loaded);
        EXPECT_EQ(loaded.error().kind, c.kind);
        EXPECT_EQ(tree.read(c.name), c.bytes);
    }
    auto latin = TextFile::load(tree / "latin1.txt");
    EXPECT_EQ(latin.error().errorDescription(),
              "The file is not valid UTF-8 or BOM-marked UTF-16. To avoid corrupting it, it is not converted.");
    auto missing = TextFile::load(tree / "none.txt");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().errorDescription(), "Couldn’t read “none.txt”: No such file or directory.");
}

TEST(TextFileLoad, TheSizeLimitIsCheckedBeforeReading)
{
    TempTree tree;
    const std::int64_t limit = 1 << 20;
    const auto atLimit = tree.file("at-limit.txt", std::string(static_cast<std::size_t>(limit), 'x'));
    const auto over = tree.file("over.txt", std::string(static_cast<std::size_t>(limit) + 1, 'x'));

    auto loaded = TextFile::load(atLimit, limit);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->text.size(), static_cast<std::size_t>(limit));

    const auto before = bytesReadSoFar();
    auto refused = TextFile::load(over, limit);
    const auto read = bytesReadSoFar() - before;
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), TextFileError::tooLarge(limit + 1, limit));
    EXPECT_LT(read, 4096) << "the refused file was read";
    EXPECT_EQ(refused.error().errorDescription(), "The file is too large to edit (1.0 MB; the limit is 1.0 MB).");

    // A sparse file of 40 GB costs nothing to refuse either.
    const auto huge = tree / "huge.log";
    {
        std::ofstream(huge.native()).put('x');
    }
    fs::resize_file(huge, std::int64_t{40} << 30);
    auto big = TextFile::load(huge);
    ASSERT_FALSE(big);
    EXPECT_EQ(big.error().kind, TextFileError::Kind::tooLarge);
}

TEST(TextFileLoad, NeverOpensOrBlocksOnFifosFoldersOrDevices)
{
    TempTree tree;
    const auto fifo = tree.fifo("pipe");
    tree.folder("folder");
    // Run where a hang would show as a failure rather than as a stuck test run.
    auto outcome = std::async(std::launch::async, [&] {
        std::string kinds;
        for (const fs::path& path : {fifo, tree / "folder", fs::path("/dev/zero"), fs::path("/dev/tty")}) {
            auto loaded = TextFile::load(path);
            auto viewed = PagedFile::open(path);
            kinds += (!loaded && loaded.error().kind == TextFileError::Kind::notRegularFile) ? "L" : "-";
            kinds += (!viewed && viewed.error().kind == TextFileError::Kind::notRegularFile) ? "V" : "-";
        }
        return kinds;
    });
    ASSERT_EQ(outcome.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "opening blocked";
    const auto kinds = outcome.get();
    EXPECT_EQ(kinds.substr(0, 6), "LVLVLV");
    if (fs::exists("/dev/tty")) {
        EXPECT_EQ(kinds.substr(6), "LV");
    }
    EXPECT_EQ(TextFile::load(fifo).error().errorDescription(),
              "“pipe” is not a regular file (it may be a folder, a pipe or a device).");
}

} // namespace
} // namespace orbisk
