// The archive file being written: buffered appends, and patches of header fields already written.
#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "platform/OwnedFd.h"

namespace orbisk {

/// Appends through a buffer of bufferLimit bytes, so that thousands of small members cost a
/// handful of writes. Errors are errno values. Not shared between threads.
class ArchiveOutput {
public:
    static constexpr std::size_t bufferLimit = 1 << 20;

    explicit ArchiveOutput(OwnedFd fd) : fd_(std::move(fd)) {}

    /// Where the next appended byte will be in the file.
    [[nodiscard]] std::uint64_t offset() const { return written_ + buffer_.size(); }

    [[nodiscard]] std::expected<void, int> append(std::string_view bytes);

    /// Overwrites bytes at offset, which lie wholly in what was appended before.
    [[nodiscard]] std::expected<void, int> patch(std::uint64_t offset, std::string_view bytes);

    /// Forgets everything from offset on (a member that could not be finished), so that the next
    /// append goes there.
    [[nodiscard]] std::expected<void, int> rewind(std::uint64_t offset);

    /// Writes the buffer out, flushes the file to stable storage and closes it.
    [[nodiscard]] std::expected<void, int> finish();

private:
    [[nodiscard]] std::expected<void, int> flush();

    OwnedFd fd_;
    std::string buffer_;
    std::uint64_t written_ = 0; ///< bytes already handed to the kernel
};

} // namespace orbisk
