#include "zip/DeflateStream.h"

#include <limits>

namespace orbisk {

std::expected<DeflateStream, ZipError> DeflateStream::make(bool encode, int level)
{
    auto stream = std::make_unique<z_stream>();
    // A negative window size asks zlib for raw DEFLATE: no zlib header, no Adler-32 trailer.
    const int status = encode ? ::deflateInit2(stream.get(), level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY)
                              : ::inflateInit2(stream.get(), -15);
    if (status != Z_OK)
        return std::unexpected(ZipError::corrupt("stream"));
    return DeflateStream(encode, std::move(stream));
}

DeflateStream::DeflateStream(bool encode, std::unique_ptr<z_stream> stream)
    : stream_(std::move(stream)), buffer_(new unsigned char[bufferSize]), encoding_(encode)
{
}

DeflateStream::DeflateStream(DeflateStream&&) noexcept = default;
DeflateStream& DeflateStream::operator=(DeflateStream&&) noexcept = default;

DeflateStream::~DeflateStream()
{
    if (!stream_)
        return;
    if (encoding_)
        ::deflateEnd(stream_.get());
    else
        ::inflateEnd(stream_.get());
}

void DeflateStream::reset()
{
    if (encoding_)
        ::deflateReset(stream_.get());
    else
        ::inflateReset(stream_.get());
    finished_ = false;
}

std::expected<void, ZipError> DeflateStream::process(std::string_view input, bool final, const Output& output)
{
    z_stream& z = *stream_;
    // zlib counts in uInt; our pieces are at most a mebibyte, far below its limit.
    if (input.size() > std::numeric_limits<uInt>::max())
        return std::unexpected(ZipError::corrupt("stream"));
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    z.avail_in = static_cast<uInt>(input.size());
    while (!finished_) {
        z.next_out = buffer_.get();
        z.avail_out = static_cast<uInt>(bufferSize);
        int status = Z_OK;
        if (encoding_) {
            status = ::deflate(&z, final ? Z_FINISH : Z_NO_FLUSH);
            if (status == Z_STREAM_ERROR)
                return std::unexpected(ZipError::corrupt("stream"));
        } else {
            status = ::inflate(&z, Z_NO_FLUSH);
            if (status == Z_NEED_DICT || status == Z_DATA_ERROR)
                return std::unexpected(ZipError::corrupt("data"));
            if (status == Z_MEM_ERROR || status == Z_STREAM_ERROR)
                return std::unexpected(ZipError::corrupt("stream"));
        }
        if (status == Z_STREAM_END)
            finished_ = true;
        const std::size_t produced = bufferSize - z.avail_out;
        if (produced > 0 && !output({reinterpret_cast<const char*>(buffer_.get()), produced}))
            return std::unexpected(ZipError::corrupt("data"));
        // More output is pending only while zlib filled the whole buffer; otherwise it wants input.
        if (z.avail_out != 0 && z.avail_in == 0 && !(encoding_ && final))
            break;
        if (status == Z_BUF_ERROR && produced == 0)
            break;
    }
    if (!encoding_ && final && !finished_)
        return std::unexpected(ZipError::corrupt("data"));
    return {};
}

} // namespace orbisk
