#include "tools/ContentMatcher.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/UnicodeText.h"
#include "text/TextFile.h"

namespace orbisk {
namespace {

constexpr std::size_t shownLineLimit = 300; ///< longer lines are shown around the match

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void lowerAscii(std::string_view from, std::string& to)
{
    to.resize(from.size());
    for (std::size_t i = 0; i < from.size(); ++i) {
        const char c = from[i];
        to[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
}

/// The UTF-8 length of text's first units code units, where UnicodeText::decode turned each
/// byte that was not UTF-8 into one lone surrogate.
std::size_t bytesBefore(const icu::UnicodeString& text, std::int32_t units)
{
    std::size_t bytes = 0;
    for (std::int32_t i = 0; i < units;) {
        const UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        if (c < 0x80 || (c >= 0xDC80 && c <= 0xDCFF))
            bytes += 1;
        else if (c < 0x800)
            bytes += 2;
        else if (c < 0x10000)
            bytes += 3;
        else
            bytes += 4;
    }
    return bytes;
}

/// read() that retries when interrupted; -1 on error.
ssize_t readSome(int fd, char* into, std::size_t size)
{
    for (;;) {
        const auto got = ::read(fd, into, size);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}

} // namespace

std::expected<ContentMatcher, ExpressionError> ContentMatcher::create(std::string_view text, bool regularExpression,
                                                                      bool caseSensitive, std::size_t blockSize)
{
    ContentMatcher matcher;
    matcher.blockSize_ = std::max<std::size_t>(blockSize, 4096);
    const bool plainAscii = !regularExpression && isAscii(text);
    if (plainAscii) {
        matcher.needle_ = text;
        if (!caseSensitive) {
            matcher.foldAscii_ = true;
            lowerAscii(text, matcher.needle_);
        }
        return matcher;
    }
    if (!regularExpression && caseSensitive) {
        matcher.needle_ = text;
        return matcher;
    }
    // A regular expression, or a non-ASCII text whose case is to be ignored: ICU knows the cases.
    std::uint32_t flags = UREGEX_MULTILINE;
    if (!caseSensitive)
        flags |= UREGEX_CASE_INSENSITIVE;
    if (!regularExpression)
        flags |= UREGEX_LITERAL;
    UParseError where{};
    UErrorCode status = U_ZERO_ERROR;
    std::shared_ptr<icu::RegexPattern> pattern(
        icu::RegexPattern::compile(UnicodeText::decode(text), flags, where, status));
    if (U_FAILURE(status) || !pattern)
        return std::unexpected(ExpressionError{u_errorName(status), where.offset});
    matcher.matcher_.reset(pattern->matcher(status));
    if (U_FAILURE(status) || !matcher.matcher_)
        return std::unexpected(ExpressionError{u_errorName(status), -1});
    matcher.pattern_ = std::move(pattern);
    return matcher;
}

std::size_t ContentMatcher::find(std::string_view region)
{
    if (matcher_) {
        decoded_ = UnicodeText::decode(region);
        matcher_->reset(decoded_);
        UErrorCode status = U_ZERO_ERROR;
        if (!matcher_->find(0, status) || U_FAILURE(status))
            return std::string_view::npos;
        const auto start = matcher_->start(status);
        return U_FAILURE(status) ? std::string_view::npos : bytesBefore(decoded_, start);
    }
    if (needle_.empty())
        return 0;
    if (foldAscii_) {
        lowerAscii(region, lowered_);
        region = lowered_;
    }
    const void* at = ::memmem(region.data(), region.size(), needle_.data(), needle_.size());
    return at ? static_cast<std::size_t>(static_cast<const char*>(at) - region.data()) : std::string_view::npos;
}

ContentMatcher::Found ContentMatcher::search(int fd, const CancellationToken& cancellation)
{
    buffer_.resize(blockSize_);
    std::int64_t bufferOffset = 0; // where buffer_[0] lies in the file
    std::size_t carried = 0;       // bytes at the buffer's start kept from the last block
    bool first = true;
    for (;;) {
        if (cancellation.isCancelled())
            return {Outcome::cancelled, {}};
        const auto got = readSome(fd, buffer_.data() + carried, buffer_.size() - carried);
        if (got < 0)
            return {Outcome::unreadable, {}};
        const std::size_t filled = carried + static_cast<std::size_t>(got);
        const bool atEnd = got == 0;
        if (first) {
            first = false;
            if (TextFile::looksBinary(std::string_view(buffer_.data(), filled)))
                return {Outcome::binary, {}};
        }
        if (filled == 0)
            return {Outcome::noMatch, {}};

        // Search whole lines; the unfinished last line waits for the next block, unless the
        // block holds no line end at all.
        std::size_t end = filled;
        if (!atEnd) {
            const void* lastBreak = ::memrchr(buffer_.data(), '\n', filled);
            if (lastBreak != nullptr)
                end = static_cast<std::size_t>(static_cast<const char*>(lastBreak) - buffer_.data()) + 1;
        }
        const std::string_view region(buffer_.data(), end);
        const auto at = find(region);
        if (at != std::string_view::npos)
            return {Outcome::match, describe(fd, bufferOffset, region, at, filled)};
        if (atEnd)
            return {Outcome::noMatch, {}};

        // Keep the unfinished line; within one over-long line keep enough for a match that
        // straddles the cut (a regular expression is cut there: a compromise for lines over a block).
        std::size_t keep = filled - end;
        if (end == filled && !matcher_)
            keep = std::min(filled, needle_.empty() ? 0 : needle_.size() - 1);
        std::memmove(buffer_.data(), buffer_.data() + filled - keep, keep);
        bufferOffset += static_cast<std::int64_t>(filled - keep);
        carried = keep;
        if (carried == buffer_.size())
            carried = 0;
    }
}

ContentMatch ContentMatcher::describe(int fd, std::int64_t regionOffset, std::string_view region, std::size_t at,
                                      std::size_t filled)
{
    ContentMatch match;
    const std::string_view all(buffer_.data(), filled);
    const auto lineStart = at == 0 ? 0 : all.rfind('\n', at - 1) + 1; // npos + 1 wraps to 0
    auto lineEnd = all.find('\n', at);
    if (lineEnd == std::string_view::npos)
        lineEnd = all.size();
    std::size_t from = lineStart;
    std::size_t to = lineEnd;
    if (to > from && all[to - 1] == '\r')
        --to;
    if (to - from > shownLineLimit) {
        // Show the match with some of what leads up to it, cut at character boundaries.
        from = std::max(from, at > shownLineLimit / 4 ? at - shownLineLimit / 4 : 0);
        while (from < at && (static_cast<unsigned char>(all[from]) & 0xC0) == 0x80)
            ++from;
        to = std::min(to, from + shownLineLimit);
        while (to > at && to < all.size() && (static_cast<unsigned char>(all[to]) & 0xC0) == 0x80)
            --to;
    }
    match.line.assign(all.substr(from, to - from));

    // Lines are counted only now, for the one file that matched: the search itself never pays
    // for counting. What came before this buffer is read again, mostly from the page cache.
    std::int64_t lines = 1 + std::count(region.begin(), region.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    for (std::int64_t offset = 0; offset < regionOffset;) {
        const auto size = static_cast<std::size_t>(std::min<std::int64_t>(regionOffset - offset, 1 << 16));
        char chunk[1 << 16];
        const auto got = ::pread(fd, chunk, size, offset);
        if (got <= 0)
            break;
        lines += std::count(chunk, chunk + got, '\n');
        offset += got;
    }
    match.lineNumber = lines;
    return match;
}

} // namespace orbisk
