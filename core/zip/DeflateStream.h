// Raw DEFLATE (RFC 1951, no zlib header or trailer) in both directions, through zlib.
#pragma once

#include <zlib.h>

#include <expected>
#include <functional>
#include <memory>
#include <string_view>

#include "zip/ZipError.h"

namespace orbisk {

/// One stream, compressing (encode) or inflating. Input is fed in pieces; each produced block of
/// at most bufferSize bytes is handed to the output callback, which may say stop (false). Owns
/// the zlib state and one output buffer, freed when it goes away. Not shared between threads.
class DeflateStream {
public:
    static constexpr std::size_t bufferSize = 262'144;

    /// Hands one produced block on; false stops the stream (process then fails with corrupt("data")).
    using Output = std::function<bool(std::string_view block)>;

    /// Fails with corrupt("stream") when zlib cannot set the stream up. level is zlib's 1–9 (6 is
    /// the usual trade-off); it means nothing when inflating.
    [[nodiscard]] static std::expected<DeflateStream, ZipError> make(bool encode, int level = 6);

    DeflateStream(DeflateStream&&) noexcept;
    DeflateStream& operator=(DeflateStream&&) noexcept;
    DeflateStream(const DeflateStream&) = delete;
    DeflateStream& operator=(const DeflateStream&) = delete;
    ~DeflateStream();

    /// Feeds input. Compressing, final ends the stream and flushes the rest. Inflating, the stream
    /// ends by itself when its last block is read; input after that end is left unread, and a
    /// final call that does not reach the end fails. Errors: corrupt("data") for bad data or a
    /// stop from output, corrupt("stream") for a codec failure.
    [[nodiscard]] std::expected<void, ZipError> process(std::string_view input, bool final, const Output& output);

    /// Starts a new stream with the same settings, keeping the allocations: members of an archive
    /// reuse one stream instead of setting up zlib's state (a few hundred KiB) for each.
    void reset();

    /// Whether the stream has seen (inflating) or written (compressing) its end.
    [[nodiscard]] bool finished() const { return finished_; }

private:
    DeflateStream(bool encode, std::unique_ptr<z_stream> stream);

    std::unique_ptr<z_stream> stream_;
    std::unique_ptr<unsigned char[]> buffer_;
    bool encoding_ = false;
    bool finished_ = false;
};

} // namespace orbisk
