#include "platform/FileDataCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <new>
#include <optional>

namespace orbisk::FileDataCopy {
namespace {

// Small enough to stay in the processor's cache between the read and the write: a 1 MiB buffer
// copied a large file onto tmpfs about a fifth slower than 128 KiB.
constexpr std::int64_t maxBufferBytes = std::int64_t{128} << 10;
constexpr std::size_t pageBytes = 4096;
// A chunk finished faster than this is followed by one twice as large.
constexpr std::chrono::milliseconds quickChunk{50};

// One copy of one file: the descriptors, the method currently in use and the buffer the
// read/write method needs, allocated only when it comes to that.
class DataCopy {
public:
    DataCopy(int source, int destination, const CopyOptions& options, const CopyProgress& progress,
             const std::filesystem::path& from, const std::filesystem::path& to)
        : source_(source), destination_(destination), chunkBytes_(std::max<std::int64_t>(options.chunkBytes, 1)),
          largestChunkBytes_(std::max(options.largestChunkBytes, chunkBytes_)), method_(options.firstMethod),
          learned_(options.firstMethod), progress_(progress), from_(from), to_(to)
    {
    }

    /// The method the next copy between the same file systems can start with.
    [[nodiscard]] CopyMethod learned() const { return learned_; }

    std::expected<CopyOutcome, CopyError> run(const struct stat& status)
    {
        if (status.st_size == 0)
            return stream();
        if (method_ == CopyMethod::clone) {
            if (::ioctl(destination_, FICLONE, source_) == 0)
                return report(status.st_size) ? CopyOutcome::copied : CopyOutcome::cancelled;
            if (errno == ENOSPC || errno == EDQUOT)
                return writeError(errno);
            // Any other refusal (EOPNOTSUPP, EXDEV, EINVAL, ENOTTY...) means "not here". EINVAL
            // can be about this file alone (Btrfs refuses to share extents between files with
            // different checksum settings), so only the others rule cloning out for good.
            if (errno == EOPNOTSUPP || errno == EXDEV || errno == ENOTTY || errno == ENOSYS)
                learned_ = CopyMethod::copyFileRange;
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
        using Clock = std::chrono::steady_clock;
        off_t at = start;
        while (!end || at < *end) {
            const std::int64_t wanted = end ? std::min<std::int64_t>(chunkBytes_, *end - at) : chunkBytes_;
            const auto began = Clock::now();
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
            if (*moved == wanted && chunkBytes_ < largestChunkBytes_ && Clock::now() - began < quickChunk)
                chunkBytes_ = std::min(chunkBytes_ * 2, largestChunkBytes_);
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
                if (errno == EXDEV || errno == ENOSYS || errno == EOPNOTSUPP)
                    learned_ = CopyMethod::readWrite;
                method_ = CopyMethod::readWrite;
                return -1;
            }
            if (isWriteSideError(errno))
                return writeError(errno);
            return readError(errno);
        }
    }

    // Moves up to `wanted` bytes through the buffer; fewer only at the end of the source.
    std::expected<std::int64_t, CopyError> readWrite(off_t at, std::int64_t wanted)
    {
        char* buffer = ensureBuffer();
        std::int64_t done = 0;
        while (done < wanted) {
            const auto size = static_cast<std::size_t>(std::min(wanted - done, bufferBytes_));
            ssize_t got = 0;
            do
                got = ::pread(source_, buffer, size, at + done);
            while (got < 0 && errno == EINTR);
            if (got < 0)
                return readError(errno);
            if (got == 0)
                break;
            if (auto written = writeAll(buffer, static_cast<std::size_t>(got), at + done); !written)
                return std::unexpected(written.error());
            done += got;
        }
        return done;
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

    // One buffer per thread, kept for its lifetime: allocating it per file cost a mmap and a
    // munmap for every small file. It is page-aligned because the kernel copies into an unaligned
    // buffer markedly slower (reading into malloc's 16-byte-aligned block took over twice as long).
    char* ensureBuffer()
    {
        struct AlignedFree {
            void operator()(char* data) const { ::operator delete[](data, std::align_val_t{pageBytes}); }
        };
        thread_local const std::unique_ptr<char[], AlignedFree> buffer(static_cast<char*>(
            ::operator new[](static_cast<std::size_t>(maxBufferBytes), std::align_val_t{pageBytes})));
        bufferBytes_ = std::min(chunkBytes_, maxBufferBytes);
        return buffer.get();
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
    std::int64_t largestChunkBytes_;
    CopyMethod method_;
    CopyMethod learned_;
    const CopyProgress& progress_;
    const std::filesystem::path& from_;
    const std::filesystem::path& to_;
    std::int64_t bufferBytes_ = 0;
};

} // namespace

std::expected<CopyOutcome, CopyError> copy(int source, int destination, const struct stat& status,
                                           const CopyOptions& options, const CopyProgress& progress,
                                           const std::filesystem::path& from, const std::filesystem::path& to)
{
    DataCopy copy(source, destination, options, progress, from, to);
    auto result = copy.run(status);
    if (result && options.learnedMethod)
        *options.learnedMethod = copy.learned();
    return result;
}

} // namespace orbisk::FileDataCopy
