#include "text/PagedFile.h"

#include "platform/OwnedFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace orbisk {
namespace {

constexpr std::int64_t pageSize = 256 * 1024;
constexpr std::int64_t lineSearchLimit = 1024 * 1024;
constexpr std::int64_t findChunk = 4 * 1024 * 1024;

void lowerAscii(std::string& text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + ('a' - 'A'));
}

} // namespace

struct PagedFile::State {
    OwnedFd fd;
    std::atomic<std::int64_t> size{0}; ///< written by refresh, read by find on another thread too
    std::string memory;                ///< the bytes of a view made fromBytes
    // One cached page: scrolling reads the same region many times in a row.
    mutable std::int64_t pageOffset = -1;
    mutable std::string page;
};

PagedFile::PagedFile(std::unique_ptr<State> state) : state_(std::move(state)) {}
PagedFile::PagedFile(PagedFile&&) noexcept = default;
PagedFile& PagedFile::operator=(PagedFile&&) noexcept = default;
PagedFile::~PagedFile() = default;

std::expected<PagedFile, TextFileError> PagedFile::open(const std::filesystem::path& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::unexpected(TextFileError::system(errno, "read", path));
    if (!S_ISREG(status.st_mode))
        return std::unexpected(TextFileError::notRegularFile(path));
    auto state = std::make_unique<State>();
    state->fd = OwnedFd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!state->fd.isOpen())
        return std::unexpected(TextFileError::system(errno, "read", path));
    if (::fstat(state->fd.get(), &status) != 0)
        return std::unexpected(TextFileError::system(errno, "read", path));
    if (!S_ISREG(status.st_mode))
        return std::unexpected(TextFileError::notRegularFile(path));
    // Reading forward is what a viewer mostly does; the kernel may read ahead generously.
    (void)::posix_fadvise(state->fd.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    state->size = status.st_size;
    return PagedFile(std::move(state));
}

PagedFile PagedFile::fromBytes(std::string bytes)
{
    auto state = std::make_unique<State>();
    state->size = static_cast<std::int64_t>(bytes.size());
    state->memory = std::move(bytes);
    return PagedFile(std::move(state));
}

std::int64_t PagedFile::size() const
{
    return state_->size.load(std::memory_order_relaxed);
}

bool PagedFile::refresh()
{
    if (!state_->fd.isOpen())
        return false;
    struct stat status {};
    if (::fstat(state_->fd.get(), &status) != 0 || status.st_size == size())
        return false;
    state_->size = status.st_size;
    state_->pageOffset = -1;
    return true;
}

std::string PagedFile::readDirect(std::int64_t offset, std::size_t length) const
{
    const auto total = size();
    if (offset < 0 || offset >= total)
        return {};
    length = static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(length), total - offset));
    if (!state_->fd.isOpen())
        return state_->memory.substr(static_cast<std::size_t>(offset), length);
    std::string data(length, '\0');
    std::size_t used = 0;
    while (used < length) {
        const ssize_t got = ::pread(state_->fd.get(), data.data() + used, length - used,
                                    static_cast<off_t>(offset + static_cast<std::int64_t>(used)));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        used += static_cast<std::size_t>(got);
    }
    data.resize(used);
    return data;
}

std::string PagedFile::read(std::int64_t offset, std::size_t length) const
{
    if (offset < 0 || offset >= size() || length == 0)
        return {};
    if (!state_->fd.isOpen() || static_cast<std::int64_t>(length) > pageSize / 2)
        return readDirect(offset, length);
    auto& state = *state_;
    const auto end = offset + static_cast<std::int64_t>(length);
    const auto cachedEnd = state.pageOffset + static_cast<std::int64_t>(state.page.size());
    if (state.pageOffset < 0 || offset < state.pageOffset || std::min(end, size()) > cachedEnd) {
        state.pageOffset = std::max<std::int64_t>(0, offset - pageSize / 4) & ~std::int64_t{4095};
        state.page = readDirect(state.pageOffset, static_cast<std::size_t>(pageSize));
    }
    const auto from = static_cast<std::size_t>(offset - state.pageOffset);
    return from < state.page.size() ? state.page.substr(from, length) : std::string();
}

std::int64_t PagedFile::lineStart(std::int64_t offset) const
{
    offset = std::clamp<std::int64_t>(offset, 0, size());
    const auto floor = std::max<std::int64_t>(0, offset - lineSearchLimit);
    // Read backwards in small pieces first: most lines are short.
    for (std::int64_t window = 4096;; window *= 4) {
        const auto start = std::max(floor, offset - window);
        const auto bytes = read(start, static_cast<std::size_t>(offset - start));
        if (const void* found = bytes.empty() ? nullptr : ::memrchr(bytes.data(), '\n', bytes.size())) {
            const auto lineBegin = start + (static_cast<const char*>(found) - bytes.data()) + 1;
            return lineBegin + (offset - lineBegin) / maximumLineLength * maximumLineLength;
        }
        if (start == floor)
            break;
    }
    // The first line of the file, or a line whose start is out of reach: pieces counted from 0.
    return offset / maximumLineLength * maximumLineLength;
}

std::int64_t PagedFile::nextLineStart(std::int64_t start) const
{
    if (start >= size())
        return size();
    const auto limit = std::min(size(), start + maximumLineLength);
    for (std::int64_t at = start; at < limit;) {
        const auto piece = std::min<std::int64_t>(4096, limit - at);
        const auto bytes = read(at, static_cast<std::size_t>(piece));
        if (bytes.empty())
            return size();
        if (const void* found = std::memchr(bytes.data(), '\n', bytes.size()))
            return at + (static_cast<const char*>(found) - bytes.data()) + 1;
        at += static_cast<std::int64_t>(bytes.size());
    }
    // A long line continues in its next piece; in the region where pieces are counted from the
    // start of the file, the next piece begins at the next multiple.
    const auto next = start + maximumLineLength;
    return std::min(size(), next);
}

std::int64_t PagedFile::stepLines(std::int64_t start, std::int64_t count) const
{
    for (; count > 0 && start < size(); --count)
        start = nextLineStart(start);
    for (; count < 0 && start > 0; ++count)
        start = lineStart(start - 1);
    return start;
}

std::optional<std::int64_t> PagedFile::find(std::string_view needle, std::int64_t from, std::int64_t end,
                                            bool matchCase, std::stop_token stop) const
{
    if (needle.empty())
        return std::nullopt;
    std::string pattern(needle);
    if (!matchCase)
        lowerAscii(pattern);
    end = std::min(end, size());
    const auto overlap = static_cast<std::int64_t>(pattern.size()) - 1;
    for (std::int64_t at = std::max<std::int64_t>(0, from); at < end; at += findChunk - overlap) {
        if (stop.stop_requested())
            return std::nullopt;
        auto chunk = readDirect(at, static_cast<std::size_t>(std::min(findChunk, end - at)));
        if (chunk.size() < pattern.size())
            return std::nullopt;
        if (!matchCase)
            lowerAscii(chunk);
        if (const void* hit = ::memmem(chunk.data(), chunk.size(), pattern.data(), pattern.size()))
            return at + (static_cast<const char*>(hit) - chunk.data());
        if (at + static_cast<std::int64_t>(chunk.size()) >= end)
            break;
    }
    return std::nullopt;
}

} // namespace orbisk
