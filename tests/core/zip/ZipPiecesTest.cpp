#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "zip/ByteWriter.h"
#include "zip/CRC32.h"
#include "zip/DOSDate.h"
#include "zip/DeflateStream.h"
#include "zip/ZipNames.h"

namespace orbisk {
namespace {

TEST(CRC32, MatchesTheStandardCheckValueInOnePieceOrMany)
{
    EXPECT_EQ(CRC32::of(""), 0u);
    EXPECT_EQ(CRC32::of("123456789"), 0xCBF43926u);
    CRC32 pieces;
    pieces.update("1234");
    pieces.update("");
    pieces.update("56789");
    EXPECT_EQ(pieces.value(), 0xCBF43926u);
}

class LocalTimeZone : public testing::Test {
protected:
    // DOS dates are wall-clock time; a fixed zone keeps the expected fields independent of the machine.
    LocalTimeZone()
    {
        if (const char* old = std::getenv("TZ"))
            saved_ = old;
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
    ~LocalTimeZone() override
    {
        if (saved_)
            ::setenv("TZ", saved_->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    static std::time_t utc(int year, int month, int day, int hour, int minute, int second)
    {
        std::tm parts{};
        parts.tm_year = year - 1900;
        parts.tm_mon = month - 1;
        parts.tm_mday = day;
        parts.tm_hour = hour;
        parts.tm_min = minute;
        parts.tm_sec = second;
        return ::timegm(&parts);
    }
    std::optional<std::string> saved_;
};

TEST_F(LocalTimeZone, DOSDatesPackFieldsClampOldYearsAndRefuseYearsPast2107)
{
    const auto fields = DOSDate::encode(utc(2024, 2, 29, 13, 45, 59));
    ASSERT_TRUE(fields);
    EXPECT_EQ(fields->date, (2024 - 1980) << 9 | 2 << 5 | 29);
    EXPECT_EQ(fields->time, 13 << 11 | 45 << 5 | 29); // seconds truncated to an even number
    EXPECT_EQ(DOSDate::decode(fields->time, fields->date), utc(2024, 2, 29, 13, 45, 58));

    const auto old = DOSDate::encode(utc(1975, 6, 15, 8, 0, 0));
    ASSERT_TRUE(old);
    EXPECT_EQ(old->date, 0 << 9 | 6 << 5 | 15);

    EXPECT_TRUE(DOSDate::encode(utc(2107, 12, 31, 23, 59, 58)));
    EXPECT_FALSE(DOSDate::encode(utc(2108, 1, 1, 0, 0, 0)));

    EXPECT_FALSE(DOSDate::decode(0, 0)) << "month 0";
    EXPECT_FALSE(DOSDate::decode(0, (44 << 9) | (2 << 5) | 31)) << "31 February";
    EXPECT_FALSE(DOSDate::decode(24 << 11, (44 << 9) | (1 << 5) | 1)) << "hour 24";
}

TEST(ZipNames, SafeComponentsDropEmptyAndDotPiecesAndRefuseEveryEscape)
{
    using Parts = std::vector<std::string>;
    EXPECT_EQ(ZipNames::safeComponents("a/./b"), (Parts{"a", "b"}));
    EXPECT_EQ(ZipNames::safeComponents("a//b/"), (Parts{"a", "b"}));
    EXPECT_EQ(ZipNames::safeComponents("dir\\file"), (Parts{"dir", "file"}));
    EXPECT_EQ(ZipNames::safeComponents("..."), (Parts{"..."}));
    EXPECT_EQ(ZipNames::safeComponents("C:/x"), (Parts{"C:", "x"}));
    using namespace std::string_view_literals;
    for (const std::string_view unsafe : {""sv, "/"sv, "."sv, "./"sv, "/etc/x"sv, "\\etc\\x"sv, "../x"sv, "a/../../x"sv,
                                          "a/.."sv, "a\\..\\b"sv, ".."sv, "a\0b"sv})
        EXPECT_FALSE(ZipNames::safeComponents(unsafe)) << unsafe;
}

TEST(ZipNames, LinkTextStaysInsideOnlyWhileItsStepsUpDoNotPassTheRoot)
{
    EXPECT_TRUE(ZipNames::linkStaysInside(0, "sub/file"));
    EXPECT_TRUE(ZipNames::linkStaysInside(1, "../sibling"));
    EXPECT_TRUE(ZipNames::linkStaysInside(0, "a/../b"));
    EXPECT_FALSE(ZipNames::linkStaysInside(0, "../outside"));
    EXPECT_FALSE(ZipNames::linkStaysInside(1, "../../outside"));
    EXPECT_FALSE(ZipNames::linkStaysInside(2, "/etc/passwd"));
    EXPECT_FALSE(ZipNames::linkStaysInside(0, "a/../../b"));
    EXPECT_FALSE(ZipNames::linkStaysInside(0, ""));
}

TEST(ZipNames, StoredNamesAreComposedAndForeignBytesKept)
{
    EXPECT_EQ(ZipNames::storedName("Cafe\xCC\x81/x"), "Caf\xC3\xA9/x");
    EXPECT_EQ(ZipNames::storedName("caf\xE9"), "caf\xE9");
    EXPECT_FALSE(ZipNames::isValidUtf8("\xC0\xAF"));     // overlong "/"
    EXPECT_FALSE(ZipNames::isValidUtf8("\xED\xA0\x80")); // a surrogate
    EXPECT_TRUE(ZipNames::isValidUtf8("\xF0\x9F\x98\x80"));

    // Bytes that are not UTF-8 are code page 437 only from systems that write names that way.
    EXPECT_EQ(ZipNames::decodeName("caf\x82", false, false), "caf\xC3\xA9");
    EXPECT_EQ(ZipNames::decodeName("\x9B\xE1", false, false), "\xC2\xA2\xC3\x9F");
    EXPECT_EQ(ZipNames::decodeName("caf\xE9", false, true), "caf\xE9");
    EXPECT_EQ(ZipNames::decodeName("caf\xC3\xA9", false, false), "caf\xC3\xA9");
}

TEST(DeflateStream, RoundTripsInPiecesAndRefusesDamagedOrShortStreams)
{
    std::string input;
    for (int i = 0; i < 200000; ++i)
        input += std::to_string(i * 7919 % 10007);
    auto encoder = DeflateStream::make(true);
    ASSERT_TRUE(encoder);
    std::string packed;
    const auto collect = [](std::string& into) {
        return [&into](std::string_view block) {
            EXPECT_LE(block.size(), DeflateStream::bufferSize);
            into.append(block);
            return true;
        };
    };
    const std::size_t half = input.size() / 2;
    ASSERT_TRUE(encoder->process(std::string_view(input).substr(0, half), false, collect(packed)));
    ASSERT_TRUE(encoder->process(std::string_view(input).substr(half), true, collect(packed)));
    EXPECT_TRUE(encoder->finished());
    EXPECT_LT(packed.size(), input.size() / 2);

    auto decoder = DeflateStream::make(false);
    ASSERT_TRUE(decoder);
    std::string unpacked;
    for (std::size_t at = 0; at < packed.size(); at += 1000)
        ASSERT_TRUE(
            decoder->process(std::string_view(packed).substr(at, 1000), at + 1000 >= packed.size(), collect(unpacked)));
    EXPECT_TRUE(decoder->finished());
    EXPECT_EQ(unpacked, input);

    auto shortDecoder = DeflateStream::make(false);
    std::string ignored;
    EXPECT_EQ(shortDecoder->process(std::string_view(packed).substr(0, packed.size() / 2), true, collect(ignored)),
              std::unexpected(ZipError::corrupt("data")));
    auto badDecoder = DeflateStream::make(false);
    EXPECT_FALSE(badDecoder->process("\xFF\xFF\xFF\xFF garbage", true, collect(ignored)));
}

TEST(ByteWriter, WritesAndReadsLittleEndianFields)
{
    std::string buffer;
    ByteWriter w(buffer);
    w.u16(0x0314);
    w.u32(0x06054b50);
    EXPECT_EQ(buffer, std::string("\x14\x03\x50\x4b\x05\x06", 6));
    EXPECT_EQ(le16(buffer, 0), 0x0314);
    EXPECT_EQ(le32(buffer, 2), 0x06054b50u);
}

} // namespace
} // namespace orbisk
