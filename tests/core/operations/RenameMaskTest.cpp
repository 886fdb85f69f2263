#include <gtest/gtest.h>

#include "operations/RenameMask.h"

namespace orbisk {
namespace {

TEST(RenameMask, RecognisesMasksByTheirWildcards)
{
    EXPECT_TRUE(RenameMask::isMask("*.bak"));
    EXPECT_TRUE(RenameMask::isMask("file?"));
    EXPECT_FALSE(RenameMask::isMask("report.txt"));
    EXPECT_FALSE(RenameMask::isMask(""));
}

TEST(RenameMask, AppliesStemAndExtensionPartsSeparately)
{
    struct Case {
        std::string mask, name, expected;
    };
    const Case cases[] = {
        {"*.bak", "report.txt", "report.bak"},
        {"*", "report.txt", "report.txt"},
        {"*.*", "archive.tar.gz", "archive.tar.gz"},
        {"a?c.*", "xyz.txt", "ayc.txt"},
        {"*_old.*", "notes.md", "notes_old.md"},
        {"*.", "notes.md", "notes"},
        {"*.bak", ".profile", ".profile.bak"},
        {"*.bak", "README", "README.bak"},
        {"*.*", "README", "README"},
        {"???"
         "?-x",
         "ab", "ab-x"},
        {"new_*", "old.txt", "new_old.txt"},
        {"?.txt", "é.md", "é.txt"},
        // "?" takes a whole user-perceived character: e + combining acute, a flag of two code points.
        {"??.txt", "e\u0301\U0001F1EB\U0001F1F7z.md", "e\u0301\U0001F1EB\U0001F1F7.txt"},
        // A byte that is not UTF-8 is one character of its own and survives as it is.
        {"?x*.*", "\xE9t\xFF.r\xFEw", "\xE9x\xE9t\xFF.r\xFEw"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask + " on " + c.name);
        EXPECT_EQ(RenameMask::apply(c.mask, std::string_view(c.name)), c.expected);
    }
}

TEST(RenameMask, RefusesResultsThatCollideIgnoringCaseOrAreNotNames)
{
    const std::vector<std::string> clash = {"a.md", "a.rtf"};
    auto result = RenameMask::apply("*.txt", clash);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), FileOperationError::invalidName("a.txt", "more than one item would be named “a.txt”."));

    const std::vector<std::string> caseClash = {"A.md", "a.rtf"};
    result = RenameMask::apply("*.txt", caseClash);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().kind(), FileOperationError::Kind::invalidName);

    const std::vector<std::string> dots = {"x.md"};
    result = RenameMask::apply("..", dots);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), FileOperationError::invalidName(".", "“.” and “..” are reserved."))
        << result.error().errorDescription();

    const std::vector<std::string> fine = {"a.md", "b.md", "C.rtf", "\xE9.md", "\xC9.md"};
    result = RenameMask::apply("*_1.*", fine);
    ASSERT_TRUE(result) << result.error().errorDescription();
    EXPECT_EQ(*result, (std::vector<std::string>{"a_1.md", "b_1.md", "C_1.rtf", "\xE9_1.md", "\xC9_1.md"}))
        << "invalid bytes are never folded together";
}

} // namespace
} // namespace orbisk
