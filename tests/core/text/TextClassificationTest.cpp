#include <gtest/gtest.h>

#include "text/TextFile.h"

#include <string>

namespace orbisk {
namespace {

using namespace std::string_literals;
using Kind = TextClassification::Kind;

TEST(TextClassification, MarksComeFirstThenTheBinaryTestThenUtf8)
{
    struct Case {
        const char* what;
        std::string bytes;
        TextClassification expected;
    };
    const std::string controls19(19, 'a');
    const Case cases[] = {
        {"empty", "", TextClassification::text(TextEncodingKind::utf8)},
        {"one NUL byte", "\0"s, TextClassification::binary()},
        {"a NUL after text", "hello\0world"s, TextClassification::binary()},
        {"UTF-16 LE with BOM, half zero bytes", "\xFF\xFEh\0i\0\n\0"s,
         TextClassification::text(TextEncodingKind::utf16LE)},
        {"UTF-16 BE with BOM", "\xFE\xFF\0h\0i"s, TextClassification::text(TextEncodingKind::utf16BE)},
        {"UTF-16 LE surrogate pair", "\xFF\xFE\x3D\xD8\x00\xDE"s, TextClassification::text(TextEncodingKind::utf16LE)},
        {"UTF-16 with an odd byte count", "\xFF\xFEh\0i"s, TextClassification::unknownEncoding()},
        {"UTF-16 with a lone high surrogate", "\xFF\xFE\x3D\xD8h\0"s, TextClassification::unknownEncoding()},
        {"UTF-16 with a lone low surrogate", "\xFE\xFF\xDC\x00"s, TextClassification::unknownEncoding()},
        {"BOM alone", "\xEF\xBB\xBF", TextClassification::text(TextEncodingKind::utf8BOM)},
        {"UTF-8 BOM then Latin-1",
         "\xEF\xBB\xBF"
         "caf\xE9",
         TextClassification::unknownEncoding()},
        {"Latin-1 é", "caf\xE9", TextClassification::unknownEncoding()},
        {"UTF-8 é and emoji", "caf\xC3\xA9 \xF0\x9F\x98\x80", TextClassification::text(TextEncodingKind::utf8)},
        {"overlong slash", "\xC0\xAF", TextClassification::unknownEncoding()},
        {"overlong three bytes", "\xE0\x80\xAF", TextClassification::unknownEncoding()},
        {"UTF-8 encoded surrogate", "\xED\xA0\x80", TextClassification::unknownEncoding()},
        {"past U+10FFFF", "\xF4\x90\x80\x80", TextClassification::unknownEncoding()},
        {"sequence cut at the end", "abc\xE2\x82", TextClassification::unknownEncoding()},
        {"tab, form feed, escape, CR are text", "a\tb\fc\x1b[0md\r\n",
         TextClassification::text(TextEncodingKind::utf8)},
        // 1 control byte in 20 is exactly 5 %: still text; 1 in 19 is over.
        {"5 % control bytes", controls19 + "\x01", TextClassification::text(TextEncodingKind::utf8)},
        {"over 5 % control bytes", std::string(18, 'a') + "\x01", TextClassification::binary()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(TextFile::classify(c.bytes), c.expected);
    }
}

TEST(TextClassification, TheBinaryTestLooksAtTheFirst64KiBOnly)
{
    std::string late(TextFile::binaryTestLength, 'a');
    late += '\0';
    EXPECT_FALSE(TextFile::looksBinary(late));
    late[TextFile::binaryTestLength - 1] = '\0';
    EXPECT_TRUE(TextFile::looksBinary(late));

    // The share of control bytes is taken of the bytes examined, not of the whole data.
    std::string controls(TextFile::binaryTestLength, 'a');
    for (std::size_t i = 0; i < controls.size(); i += 16)
        controls[i] = '\x02';
    controls += std::string(1 << 20, 'a');
    EXPECT_TRUE(TextFile::looksBinary(controls));
}

TEST(TextClassification, LineEndingsCountPairsLoneCRsAndLoneLFs)
{
    struct Case {
        std::string text;
        LineEnding dominant;
        bool mixed;
    };
    const Case cases[] = {
        {"", LineEnding::lf, false},
        {"no break", LineEnding::lf, false},
        {"a\nb\n", LineEnding::lf, false},
        {"a\r\nb\r\n", LineEnding::crlf, false},
        {"a\rb\r", LineEnding::cr, false},
        {"a\r\nb\r\nc\nd", LineEnding::crlf, true}, // two pairs and one LF
        {"a\r\nb\n", LineEnding::lf, true},         // a tie goes to LF
        {"a\r\nb\r", LineEnding::crlf, true},       // pairs at least as many as lone CRs
        {"a\rb\rc\r\nd\n", LineEnding::cr, true},
        {"\n\r", LineEnding::lf, true}, // LF then CR is not a pair
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        const auto summary = TextFile::lineEndings(c.text);
        EXPECT_EQ(summary.dominant, c.dominant);
        EXPECT_EQ(summary.mixed, c.mixed);
    }
    EXPECT_EQ(TextFile::normalizeLineEndings("a\r\nb\rc\n\n\r\r\nd"), "a\nb\nc\n\n\n\nd");
}

TEST(TextClassification, EncodingWritesTheMarkAndTheLineEndingAndRefusesBrokenText)
{
    EXPECT_EQ(TextFile::encode("a\nb", TextEncodingKind::utf8BOM, LineEnding::crlf), "\xEF\xBB\xBF"
                                                                                     "a\r\nb");
    EXPECT_EQ(TextFile::encode("\xC3\xA9\n", TextEncodingKind::utf16BE, LineEnding::cr), "\xFE\xFF\x00\xE9\x00\r"s);
    EXPECT_EQ(TextFile::encode("\xF0\x9F\x98\x80", TextEncodingKind::utf16LE, LineEnding::lf),
              "\xFF\xFE\x3D\xD8\x00\xDE"s);
    // Text that is not valid UTF-8 (a lone surrogate smuggled in, a stray byte) has no
    // faithful form in any encoding.
    EXPECT_FALSE(TextFile::encode("\xED\xA0\x80", TextEncodingKind::utf16LE, LineEnding::lf));
    EXPECT_FALSE(TextFile::encode("caf\xE9", TextEncodingKind::utf8, LineEnding::lf));
    EXPECT_EQ(TextFile::decode("\xEF\xBB\xBFx", TextEncodingKind::utf8BOM), "x");
}

TEST(TextClassification, HexDumpShowsOffsetsBytesAndPrintableCharacters)
{
    std::string data;
    for (int i = 0; i < 20; ++i)
        data.push_back(static_cast<char>(0x3C + i));
    data[1] = '\0';
    EXPECT_EQ(TextFile::hexDump(data),
              "00000000  3c 00 3e 3f 40 41 42 43  44 45 46 47 48 49 4a 4b  |<.>?@ABCDEFGHIJK|\n"
              "00000010  4c 4d 4e 4f                                       |LMNO|\n");
    EXPECT_EQ(TextFile::hexDump("\xff", 0x1'2345'6780),
              "123456780  ff                                                |.|\n");
    EXPECT_EQ(TextFile::hexDump(""), "");
}

} // namespace
} // namespace orbisk
