#include "zip/ArchiveOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace orbisk {

std::expected<void, int> ArchiveOutput::append(std::string_view bytes)
{
    if (buffer_.size() + bytes.size() > bufferLimit) {
        if (auto flushed = flush(); !flushed)
            return flushed;
    }
    if (bytes.size() >= bufferLimit) {
        // A large block goes straight out rather than through the buffer.
        buffer_.assign(bytes);
        return flush();
    }
    buffer_.append(bytes);
    return {};
}

std::expected<void, int> ArchiveOutput::patch(std::uint64_t offset, std::string_view bytes)
{
    if (offset >= written_) {
        buffer_.replace(static_cast<std::size_t>(offset - written_), bytes.size(), bytes);
        return {};
    }
    // The header went out already (its member was larger than the buffer): write it in place.
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto n = ::pwrite(fd_.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return std::unexpected(n < 0 ? errno : EIO);
        done += static_cast<std::size_t>(n);
    }
    return {};
}

std::expected<void, int> ArchiveOutput::rewind(std::uint64_t offset)
{
    if (offset >= written_) {
        buffer_.resize(static_cast<std::size_t>(offset - written_));
        return {};
    }
    buffer_.clear();
    if (::ftruncate(fd_.get(), static_cast<off_t>(offset)) != 0 ||
        ::lseek(fd_.get(), static_cast<off_t>(offset), SEEK_SET) < 0)
        return std::unexpected(errno);
    written_ = offset;
    return {};
}

std::expected<void, int> ArchiveOutput::flush()
{
    std::size_t done = 0;
    while (done < buffer_.size()) {
        const auto n = ::write(fd_.get(), buffer_.data() + done, buffer_.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return std::unexpected(n < 0 ? errno : EIO);
        done += static_cast<std::size_t>(n);
    }
    // Starts writing these bytes back now, while the next members are compressed, so that the
    // final fsync finds little left to wait for. Only a hint: its failure changes nothing.
    ::sync_file_range(fd_.get(), static_cast<off_t>(written_), static_cast<off_t>(buffer_.size()),
                      SYNC_FILE_RANGE_WRITE);
    written_ += buffer_.size();
    buffer_.clear();
    return {};
}

std::expected<void, int> ArchiveOutput::finish()
{
    if (auto flushed = flush(); !flushed)
        return flushed;
    if (::fsync(fd_.get()) != 0 && errno != EINVAL)
        return std::unexpected(errno);
    if (const int error = fd_.close(); error != 0)
        return std::unexpected(error);
    return {};
}

} // namespace orbisk
