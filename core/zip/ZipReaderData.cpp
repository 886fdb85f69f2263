// One member's bytes: from its local header through the inflater to a sink, within its bounds.
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "zip/ByteWriter.h"
#include "zip/CRC32.h"
#include "zip/DeflateStream.h"
#include "zip/ZipReader.h"

namespace orbisk::ZipReader {

namespace {

constexpr std::uint32_t localSignature = 0x04034b50;
constexpr std::size_t localSize = 30;
constexpr std::size_t chunkSize = 1 << 20;

std::unexpected<ReadFailure> zipFailure(ZipError error)
{
    return std::unexpected(ReadFailure{std::move(error), 0});
}

std::unexpected<ReadFailure> systemFailure(int code)
{
    return std::unexpected(ReadFailure{std::nullopt, code});
}

} // namespace

std::expected<void, ReadFailure> readData(int fd, const Entry& entry, const CancellationToken& cancellation,
                                          const Sink& write, std::optional<DeflateStream>* reused)
{
    if (entry.overlapping)
        return zipFailure(ZipError::corrupt(entry.name));
    if ((entry.method & ~8) != 0)
        return zipFailure(ZipError::unsupportedMethod(entry.name, entry.method));
    std::string header(localSize, '\0');
    const auto got = ::pread(fd, header.data(), localSize, entry.localHeaderOffset);
    if (got != static_cast<ssize_t>(localSize) || le32(header, 0) != localSignature)
        return zipFailure(ZipError::corrupt(entry.name));
    // The local header's own sizes are not used (a streamed member has zeros there); its method
    // must agree with the directory, so that no reader sees other data than we check.
    if (le16(header, 8) != entry.method)
        return zipFailure(ZipError::corrupt(entry.name));
    const std::uint64_t start =
        std::uint64_t{entry.localHeaderOffset} + localSize + le16(header, 26) + le16(header, 28);
    if (start + entry.compressedSize > entry.dataLimit)
        return zipFailure(ZipError::corrupt(entry.name));

    std::optional<DeflateStream> own;
    std::optional<DeflateStream>& stream = reused ? *reused : own;
    DeflateStream* inflater = nullptr;
    if (entry.method == 8) {
        if (stream) {
            stream->reset();
        } else {
            auto made = DeflateStream::make(false);
            if (!made)
                return zipFailure(made.error());
            stream.emplace(std::move(*made));
        }
        inflater = &*stream;
    }
    CRC32 crc;
    std::uint64_t produced = 0;
    int sinkError = 0;
    bool stopped = false;
    const DeflateStream::Output output = [&](std::string_view block) {
        // A member that inflates past its declared size is stopped here, before the bytes reach
        // the disk: a lying size can cost at most one block.
        if (produced + block.size() > entry.uncompressedSize)
            return false;
        produced += block.size();
        crc.update(block);
        sinkError = write(block);
        // One compressed mebibyte can inflate to a thousand times more: the check goes per block.
        if (sinkError == 0 && cancellation.isCancelled()) {
            stopped = true;
            return false;
        }
        return sinkError == 0;
    };

    std::string chunk;
    std::uint64_t left = entry.compressedSize;
    std::uint64_t offset = start;
    while (left > 0 || (inflater && !inflater->finished())) {
        if (left == 0)
            return zipFailure(ZipError::corrupt(entry.name)); // the deflate stream is cut short
        const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(left, chunkSize));
        chunk.resize(size);
        std::size_t filled = 0;
        while (filled < size) {
            const auto n = ::pread(fd, chunk.data() + filled, size - filled, static_cast<off_t>(offset + filled));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0)
                return systemFailure(errno);
            if (n == 0)
                return zipFailure(ZipError::corrupt(entry.name));
            filled += static_cast<std::size_t>(n);
        }
        offset += size;
        left -= size;
        if (inflater) {
            if (auto processed = inflater->process(chunk, left == 0, output); !processed) {
                if (stopped)
                    return systemFailure(ECANCELED);
                if (sinkError != 0)
                    return systemFailure(sinkError);
                return zipFailure(ZipError::corrupt(entry.name));
            }
            if (inflater->finished())
                break;
        } else if (!output(chunk)) {
            if (stopped)
                return systemFailure(ECANCELED);
            if (sinkError != 0)
                return systemFailure(sinkError);
            return zipFailure(ZipError::corrupt(entry.name));
        }
        if (cancellation.isCancelled())
            return systemFailure(ECANCELED);
    }
    if (produced != entry.uncompressedSize)
        return zipFailure(ZipError::corrupt(entry.name));
    if (crc.value() != entry.crc)
        return zipFailure(ZipError::checksumMismatch(entry.name));
    return {};
}

} // namespace orbisk::ZipReader
