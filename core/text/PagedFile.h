// A file opened for the viewer: read in pages at any offset, never loaded whole, so a file of
// many gigabytes opens at once and costs a few pages of memory.
#pragma once

#include "text/TextFileError.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace orbisk {

/// Holds an open descriptor (or bytes in memory) and reads what the viewer shows. The file is read
/// with pread rather than mapped, so a file truncated by another program while it is shown gives
/// shorter reads instead of a crash. Reading, line stepping and refresh belong to one thread;
/// find() may run on another thread at the same time.
class PagedFile {
public:
    /// Longest line shown as one line: longer lines are cut into pieces of this size.
    static constexpr std::int64_t maximumLineLength = 16 * 1024;

    /// Opens path, following links, without reading it. Anything but a regular file is refused
    /// before it is opened, and the open does not wait, so a FIFO or device never blocks.
    [[nodiscard]] static std::expected<PagedFile, TextFileError> open(const std::filesystem::path& path);
    /// A view of bytes already in memory (a decoded text).
    [[nodiscard]] static PagedFile fromBytes(std::string bytes);

    PagedFile(PagedFile&&) noexcept;
    PagedFile& operator=(PagedFile&&) noexcept;
    ~PagedFile();

    /// The size as last read from the file. Any thread.
    [[nodiscard]] std::int64_t size() const;
    /// Reads the file's size again (for following a growing file); says whether it changed.
    bool refresh();

    /// Up to length bytes from offset; fewer at the end of the file or when a read fails.
    [[nodiscard]] std::string read(std::int64_t offset, std::size_t length) const;

    /// Where the line holding offset starts: after the previous line feed, or at the piece of a
    /// long line that holds offset. Lines longer than a megabyte are cut at multiples of
    /// maximumLineLength counted from the start of the file, as their start is too far back.
    [[nodiscard]] std::int64_t lineStart(std::int64_t offset) const;
    /// Where the line after the one starting at lineStart begins; size() at the end.
    [[nodiscard]] std::int64_t nextLineStart(std::int64_t lineStart) const;
    /// The start of the line `count` lines before (negative) or after (positive) the line
    /// starting at lineStart, stopping at the ends of the file.
    [[nodiscard]] std::int64_t stepLines(std::int64_t lineStart, std::int64_t count) const;

    /// The offset of the first occurrence of needle at or after from and before end, or nothing.
    /// Letters A–Z match their lower case unless matchCase. Reads the file in large pieces and
    /// stops early (returning nothing) when stop is requested. Any thread.
    [[nodiscard]] std::optional<std::int64_t> find(std::string_view needle, std::int64_t from, std::int64_t end,
                                                   bool matchCase, std::stop_token stop = {}) const;

    /// The first bytes, for telling text from binary.
    [[nodiscard]] std::string head(std::size_t length) const { return read(0, length); }

private:
    struct State;
    explicit PagedFile(std::unique_ptr<State> state);
    /// Reads without the page cache; safe from any thread.
    [[nodiscard]] std::string readDirect(std::int64_t offset, std::size_t length) const;

    std::unique_ptr<State> state_;
};

} // namespace orbisk
