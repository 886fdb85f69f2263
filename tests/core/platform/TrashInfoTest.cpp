#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "platform/TrashInfo.h"
#include "support/PercentEncoding.h"

namespace orbisk {
namespace {

TEST(TrashInfo, EscapesEveryByteThatIsNotPlainAsInUrls)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"/home/me/a-b_c.d~e", "/home/me/a-b_c.d~e"},
        {"/x/100% #1?.txt", "/x/100%25%20%231%3F.txt"},
        {"/x/new\nline", "/x/new%0Aline"},
        {"/x/caf\xC3\xA9", "/x/caf%C3%A9"},
        {"/x/caf\xE9", "/x/caf%E9"},
        {"relative/path", "relative/path"},
    };
    for (const auto& [path, encoded] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(percentEncoded(path), encoded);
    }
}

TEST(TrashInfo, WritesTheInfoGroupWithALocalDeletionDate)
{
    const auto text = TrashInfo::contents("/a b", 1'700'000'000);
    EXPECT_TRUE(std::regex_match(
        text, std::regex("\\[Trash Info\\]\nPath=/a%20b\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")))
        << text;
}

TEST(TrashInfo, CandidateNamesAreDistinctAndLeaveRoomForTheInfoSuffix)
{
    const std::string longStem(300, 'x');
    const std::string utf8Stem = [] {
        std::string s;
        while (s.size() < 260)
            s += "\xC3\xA9"; // é
        return s;
    }();
    const std::vector<std::string> names = {
        "notes.txt",           ".hidden",          "archive.tar.gz",  "no extension",
        std::string(255, 'n'), longStem + ".jpeg", utf8Stem + ".txt", "a." + std::string(100, 'e')};
    for (const auto& name : names) {
        SCOPED_TRACE(name.substr(0, 40));
        std::set<std::string> seen;
        for (int attempt = 1; attempt <= 120; ++attempt) {
            const auto candidate = TrashInfo::candidateName(name, attempt);
            EXPECT_LE(candidate.size() + TrashInfo::infoSuffix.size(), TrashInfo::maximumNameLength);
            EXPECT_TRUE(seen.insert(candidate).second) << candidate;
            EXPECT_EQ(candidate.find('/'), std::string::npos);
        }
    }
    EXPECT_EQ(TrashInfo::candidateName("notes.txt", 1), "notes.txt");
    EXPECT_EQ(TrashInfo::candidateName("notes.txt", 2), "notes 2.txt");
    EXPECT_EQ(TrashInfo::candidateName(".hidden", 3), ".hidden 3");
    const auto shortened = TrashInfo::candidateName(longStem + ".jpeg", 12);
    EXPECT_TRUE(shortened.ends_with("x 12.jpeg")) << "the extension survives shortening";
    const auto cutUtf8 = TrashInfo::candidateName(utf8Stem + ".txt", 1);
    EXPECT_TRUE(cutUtf8.ends_with("\xC3\xA9.txt")) << "never cut inside a character";
}

} // namespace
} // namespace orbisk
