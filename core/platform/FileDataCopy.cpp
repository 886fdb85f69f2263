#include "platform/FileDataCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>

namespace orbisk::FileDataCopy {
namespace {

constexpr std::int64_t maxBufferBytes = std::int64_t{1} << 20;

// One copy of one file: the descriptors, the method currently in use and the buffer the
// read/write method needs, allocated only when it comes to that.
class DataCopy {
public:
    DataCopy(int source, int destination, const CopyOptions& options, const CopyProgress& progress,
             const std::filesystem::path& from, const std::filesystem::path& to)
        : source_(source), destination_(destination), chunkBytes_(std::max<std::int64_t>(options.chunkBytes, 1)),
          method_(options.firstMethod), progress_(progress), from_(from), to_(to)
    {
    }

    std::expected<CopyOutcome, CopyError> run(const struct stat& status)
    {
        if (status.st_size == 0)
            return stream();
        if (method_ == CopyMethod::clone) {
            if (::ioctl(destination_, FICLONE, source_) == 0)
                return report(status.st_size) ? CopyOutcome::copied : CopyOutcome::cancelled;
            if (errno == ENOSPC || errno == EDQUOT)
                return writeError(errno);
            // Any other refusal (EOPNOTSUPP, EXDEV, EINVAL, ENOTTY...) means "not here".
            method_ = CopyMethod::copyFileRange;
        }
        // A file with as many blocks as bytes has no holes worth finding: skip the extent walk
        // (four lseek calls), which matters when copying many small files.
        if (status.st_blocks * 512 >= status.st_size) {
            auto reached = range(0, status.st_size);
            if (!reached)
                return std::unexpected(reached.error());
            if (reached->stopped)
                return CopyOutcome::cancelled;
            return reached->endOfFile ? finish(reached->end) : CopyOutcome::copied;
        }
        return extents();
    }

private:
    // Walks the source's data extents with SEEK_DATA/SEEK_HOLE and copies only those; the holes
    // between them are left unwritten and the final size is set with ftruncate, which keeps a
    // trailing hole a hole.
    std::expected<CopyOutcome, CopyError> extents()
    {
        off_t position = 0;
        bool knowsHoles = true;
        for (;;) {
            off_t dataStart = position;
            std::optional<off_t> dataEnd;
            if (knowsHoles) {
                dataStart = ::lseek(source_, position, SEEK_DATA);
                if (dataStart < 0 && errno == ENXIO)
                    break; // nothing but a hole up to the end
                if (dataStart >= 0)
                    dataEnd = ::lseek(source_, dataStart, SEEK_HOLE);
                if (dataStart < 0 || *dataEnd < 0) {
                    if (errno != EINVAL && errno != EOPNOTSUPP)
                        return readError(errno);
                    knowsHoles = false; // treat the rest as data and copy it until the end
                    dataStart = position;
                    dataEnd.reset();
                }
            }
            auto reached = range(dataStart, dataEnd);
            if (!reached)
                return std::unexpected(reached.error());
            if (reached->stopped)
                return CopyOutcome::cancelled;
            position = reached->end;
            if (reached->endOfFile)
                return finish(position);
        }
        const off_t size = ::lseek(source_, 0, SEEK_END);
        if (size < 0)
            return readError(errno);
        if (size > position && !report(size))
            return CopyOutcome::cancelled;
        return finish(std::max(position, size));
    }

    struct Reached {
        off_t end = 0;
        bool endOfFile = false; // the source ended before the extent did (it shrank)
        bool stopped = false;
    };

    std::expected<Reached, CopyError> range(off_t start, std::optional<off_t> end)
    {
        off_t at = start;
        while (!end || at < *end) {
            const std::int64_t wanted = end ? std::min<std::int64_t>(chunkBytes_, *end - at) : chunkBytes_;
            auto moved = method_ == CopyMethod::readWrite ? readWrite(at, wanted) : copyFileRange(at, wanted);
            if (!moved)
                return std::unexpected(moved.error());
            if (*moved < 0)
                continue; // fell back to another method: same range again
            if (*moved == 0)
                return Reached{at, true, false};
            at += *moved;
            if (!report(at))
                return Reached{at, false, true};
        }
        return Reached{at, false, false};
    }

    // Returns the bytes moved, 0 at the end of the source, or -1 after switching to read/write.
    std::expected<std::int64_t, CopyError> copyFileRange(off_t at, std::int64_t wanted)
    {
        loff_t in = at;
        loff_t out = at;
        for (;;) {
            const ssize_t moved =
                ::copy_file_range(source_, &in, destination_, &out, static_cast<std::size_t>(wanted), 0);
            if (moved >= 0)
                return moved;
            if (errno == EINTR)
                continue;
            if (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP || errno == EBADF) {
                // Another file system, or one that cannot: the same offsets work with pread/pwrite.
                method_ = CopyMethod::readWrite;
                return -1;
            }
            if (isWriteSideError(errno))
                return writeError(errno);
            return readError(errno);
        }
    }

    std::expected<std::int64_t, CopyError> readWrite(off_t at, std::int64_t wanted)
    {
        char* buffer = ensureBuffer();
        const auto size = static_cast<std::size_t>(std::min(wanted, bufferBytes_));
        ssize_t got = 0;
        do
            got = ::pread(source_, buffer, size, at);
        while (got < 0 && errno == EINTR);
        if (got < 0)
            return readError(errno);
        if (auto written = writeAll(buffer, static_cast<std::size_t>(got), at); !written)
            return std::unexpected(written.error());
        return got;
    }

    // Files that report size 0 (in /proc, /sys and some FUSE file systems) may still have content:
    // read them sequentially until read returns 0.
    std::expected<CopyOutcome, CopyError> stream()
    {
        char* buffer = ensureBuffer();
        std::int64_t done = 0;
        for (;;) {
            const ssize_t got = ::read(source_, buffer, static_cast<std::size_t>(bufferBytes_));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return readError(errno);
            if (got == 0)
                return CopyOutcome::copied;
            if (auto written = writeAll(buffer, static_cast<std::size_t>(got), done); !written)
                return std::unexpected(written.error());
            done += got;
            if (!report(done))
                return CopyOutcome::cancelled;
        }
    }

    std::expected<void, CopyError> writeAll(const char* data, std::size_t size, off_t at)
    {
        while (size > 0) {
            const ssize_t written = ::pwrite(destination_, data, size, at);
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return std::unexpected(CopyError::system(CopyStep::writeDestination, errno, to_));
            data += written;
            size -= static_cast<std::size_t>(written);
            at += written;
        }
        return {};
    }

    std::expected<CopyOutcome, CopyError> finish(off_t size)
    {
        if (::ftruncate(destination_, size) != 0)
            return writeError(errno);
        return CopyOutcome::copied;
    }

    char* ensureBuffer()
    {
        if (!buffer_) {
            bufferBytes_ = std::min(chunkBytes_, maxBufferBytes);
            buffer_ = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(bufferBytes_));
        }
        return buffer_.get();
    }

    bool report(std::int64_t done) const { return !progress_ || progress_(done) == CopyControl::proceed; }

    static bool isWriteSideError(int code)
    {
        return code == ENOSPC || code == EDQUOT || code == EFBIG || code == EROFS || code == EPERM;
    }
    std::unexpected<CopyError> readError(int code) const
    {
        return std::unexpected(CopyError::system(CopyStep::readSource, code, from_));
    }
    std::unexpected<CopyError> writeError(int code) const
    {
        return std::unexpected(CopyError::system(CopyStep::writeDestination, code, to_));
    }

    int source_;
    int destination_;
    std::int64_t chunkBytes_;
    CopyMethod method_;
    const CopyProgress& progress_;
    const std::filesystem::path& from_;
    const std::filesystem::path& to_;
    std::unique_ptr<char[]> buffer_;
    std::int64_t bufferBytes_ = 0;
};

} // namespace

std::expected<CopyOutcome, CopyError> copy(int source, int destination, const struct stat& status,
                                           const CopyOptions& options, const CopyProgress& progress,
                                           const std::filesystem::path& from, const std::filesystem::path& to)
{
    return DataCopy(source, destination, options, progress, from, to).run(status);
}

} // namespace orbisk::FileDataCopy
