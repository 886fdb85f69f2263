// The content test of a file search: a plain text or an ICU regular expression, found in a file
// read in blocks of bounded size.
#pragma once

#include <unicode/regex.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "operations/CancellationToken.h"

namespace orbisk {

/// The first line of a file that holds the text.
struct ContentMatch {
    std::int64_t lineNumber = 0; ///< counted from 1
    std::string line;            ///< its bytes without the line ending, shortened around the match when long

    bool operator==(const ContentMatch&) const = default;
};

/// Why a regular expression was refused.
struct ExpressionError {
    std::string reason;       ///< ICU's name for the problem ("U_REGEX_MISMATCHED_PAREN")
    std::int32_t offset = -1; ///< where in the expression, counted in characters; -1 when unknown

    bool operator==(const ExpressionError&) const = default;
};

/// Built once per search; keeps a read buffer and a matcher, so one per thread.
class ContentMatcher {
public:
    /// text is found as it stands, or read as an ICU regular expression (lines are matched with
    /// "^" and "$" at line ends; "." stops at a line end). Case is ignored unless caseSensitive.
    [[nodiscard]] static std::expected<ContentMatcher, ExpressionError>
    create(std::string_view text, bool regularExpression, bool caseSensitive, std::size_t blockSize = 1 << 20);

    enum class Outcome { noMatch, match, binary, unreadable, cancelled };
    struct Found {
        Outcome outcome = Outcome::noMatch;
        ContentMatch match; ///< set for Outcome::match
    };

    /// Reads the open file fd from its start in blocks of blockSize (a line longer than a block
    /// is searched in pieces) and stops at the first match. Binary files are not searched. The
    /// token is read between blocks.
    [[nodiscard]] Found search(int fd, const CancellationToken& cancellation);

private:
    ContentMatcher() = default;

    /// The offset of the first match in region, or npos.
    std::size_t find(std::string_view region);
    ContentMatch describe(int fd, std::int64_t regionOffset, std::string_view region, std::size_t at,
                          std::size_t filled);

    std::string needle_;     ///< plain search: the text (lowercased ASCII when ignoring case)
    bool foldAscii_ = false; ///< plain search ignoring case: compare lowercased ASCII
    std::shared_ptr<icu::RegexPattern> pattern_;
    std::unique_ptr<icu::RegexMatcher> matcher_; ///< set when a regular expression does the finding
    icu::UnicodeString decoded_;
    std::vector<char> buffer_;
    std::string lowered_;
    std::size_t blockSize_ = 0;
};

} // namespace orbisk
