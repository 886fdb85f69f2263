#include "zip/ZipWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <variant>

#include "operations/FileOperationError.h"
#include "operations/ItemStamp.h"
#include "zip/ArchiveOutput.h"
#include "zip/ByteWriter.h"
#include "zip/CRC32.h"
#include "zip/DOSDate.h"
#include "zip/DeflateStream.h"
#include "zip/ZipError.h"
#include "zip/ZipNames.h"
#include "zip/ZipWriterEntries.h"

namespace orbisk::ZipWriter {

namespace fs = std::filesystem;
using ZipWriterEntries::Entry;

namespace {

constexpr std::uint32_t localSignature = 0x04034b50;
constexpr std::uint32_t centralSignature = 0x02014b50;
constexpr std::uint32_t endSignature = 0x06054b50;
constexpr std::uint16_t versionNeeded = 20;
constexpr std::uint16_t versionMadeBy = 0x0314; // host 3 (Unix), version 2.0
constexpr std::uint16_t utf8Flag = 0x0800;      // bit 11: names are UTF-8
constexpr std::uint64_t limit32 = 0xFFFFFFFF;
constexpr std::size_t chunkSize = 1 << 20;

struct CentralRecord {
    std::string path;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    DOSDate::Fields date;
    std::uint32_t crc = 0;
    std::uint32_t compressed = 0;
    std::uint32_t uncompressed = 0;
    std::uint32_t mode = 0;
    std::uint32_t offset = 0;
};

// A member that could not be written: it is left out and the run goes on.
struct Skip {
    ItemFailure failure;
};
// The run cannot go on: a reason for the report, or the user's cancel.
struct Stop {
    std::optional<std::string> reason;
};
using Problem = std::variant<Skip, Stop>;

Problem skip(const fs::path& path, int code, const char* action)
{
    return Skip{{path, FileOperationError::system(code, action, path)}};
}

Problem writeFailed(const fs::path& archive, int code)
{
    return Stop{FileOperationError::system(code, "write into", archive).errorDescription()};
}

class MemberWriter {
public:
    MemberWriter(ArchiveOutput& out, const fs::path& archive, const CancellationToken& cancellation,
                 OperationProgressTracker& progress)
        : out_(out), archive_(archive), cancellation_(cancellation), progress_(progress)
    {
    }

    std::variant<CentralRecord, Problem> write(const Entry& entry)
    {
        struct stat status {};
        if (::lstat(entry.source.c_str(), &status) != 0)
            return skip(entry.source, errno, "read");
        const auto date = DOSDate::encode(status.st_mtim.tv_sec);
        if (!date)
            return Skip{{entry.source, ZipError::dateOutOfRange(entry.path)}};
        CentralRecord record;
        record.path = ZipNames::storedName(entry.path);
        // A Linux name that is not UTF-8 keeps its bytes and goes without the UTF-8 flag, which
        // would be a lie that makes other readers refuse the whole archive; readers then take the
        // bytes as the Unix host's own (ours and unzip do) or as code page 437.
        record.flags = ZipNames::isValidUtf8(record.path) ? utf8Flag : 0;
        record.date = *date;
        record.mode = status.st_mode;
        if (record.path.size() > 0xFFFF)
            return skip(entry.source, ENAMETOOLONG, "read");
        if (out_.offset() >= limit32)
            return Stop{ZipError::zip64Unsupported().errorDescription()};
        record.offset = static_cast<std::uint32_t>(out_.offset());

        std::string linkTarget;
        OwnedFd file;
        if (entry.kind == Entry::Kind::link) {
            if (!S_ISLNK(status.st_mode))
                return skip(entry.source, ENOENT, "read");
            linkTarget.resize(static_cast<std::size_t>(status.st_size > 0 ? status.st_size : 4096) + 1);
            const auto n = ::readlink(entry.source.c_str(), linkTarget.data(), linkTarget.size());
            if (n < 0)
                return skip(entry.source, errno, "read");
            linkTarget.resize(static_cast<std::size_t>(n));
        } else if (entry.kind == Entry::Kind::file) {
            if (static_cast<std::uint64_t>(status.st_size) >= limit32)
                return Stop{ZipError::tooLarge(entry.path).errorDescription()};
            file = OwnedFd(::open(entry.source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY));
            struct stat opened {};
            if (!file.isOpen() || ::fstat(file.get(), &opened) != 0)
                return skip(entry.source, errno, "read");
            if (!S_ISREG(opened.st_mode))
                return Skip{{entry.source, FileOperationError::unsupportedFileType(entry.source)}};
            record.method = 8;
        }

        std::string header;
        header.reserve(30 + record.path.size());
        ByteWriter w(header);
        w.u32(localSignature);
        w.u16(versionNeeded);
        w.u16(record.flags);
        w.u16(record.method);
        w.u16(record.date.time);
        w.u16(record.date.date);
        w.u32(0); // CRC-32, compressed and uncompressed size: patched after the data
        w.u32(0);
        w.u32(0);
        w.u16(static_cast<std::uint16_t>(record.path.size()));
        w.u16(0);
        w.bytes(record.path);
        if (auto appended = out_.append(header); !appended)
            return writeFailed(archive_, appended.error());

        if (entry.kind == Entry::Kind::link) {
            if (auto appended = out_.append(linkTarget); !appended)
                return writeFailed(archive_, appended.error());
            record.crc = CRC32::of(linkTarget);
            record.compressed = record.uncompressed = static_cast<std::uint32_t>(linkTarget.size());
        } else if (entry.kind == Entry::Kind::file) {
            if (auto problem = writeData(entry, file.get(), record))
                return rewound(record.offset, std::move(*problem));
        }

        std::string sizes;
        ByteWriter patch(sizes);
        patch.u32(record.crc);
        patch.u32(record.compressed);
        patch.u32(record.uncompressed);
        if (auto patched = out_.patch(record.offset + 14, sizes); !patched)
            return writeFailed(archive_, patched.error());
        return record;
    }

private:
    // Reads the file in mebibyte chunks through the compressor into the archive.
    std::optional<Problem> writeData(const Entry& entry, int fd, CentralRecord& record)
    {
        if (!stream_) {
            auto made = DeflateStream::make(true);
            if (!made)
                return Stop{made.error().errorDescription()};
            stream_.emplace(std::move(*made));
        } else {
            stream_->reset();
        }
        auto& stream = stream_;
        CRC32 crc;
        std::uint64_t compressed = 0;
        std::uint64_t uncompressed = 0;
        int writeError = 0;
        const DeflateStream::Output output = [&](std::string_view block) {
            compressed += block.size();
            if (auto appended = out_.append(block); !appended) {
                writeError = appended.error();
                return false;
            }
            return true;
        };
        buffer_.resize(chunkSize);
        for (bool last = false; !last;) {
            std::size_t filled = 0;
            while (filled < chunkSize) {
                const auto n = ::read(fd, buffer_.data() + filled, chunkSize - filled);
                if (n < 0 && errno == EINTR)
                    continue;
                if (n < 0)
                    return skip(entry.source, errno, "read");
                if (n == 0) {
                    last = true;
                    break;
                }
                filled += static_cast<std::size_t>(n);
            }
            const std::string_view chunk(buffer_.data(), filled);
            crc.update(chunk);
            uncompressed += filled;
            if (uncompressed >= limit32)
                return Stop{ZipError::tooLarge(entry.path).errorDescription()};
            if (auto processed = stream->process(chunk, last, output); !processed) {
                if (writeError != 0)
                    return writeFailed(archive_, writeError);
                return Stop{processed.error().errorDescription()};
            }
            progress_.update([&](OperationProgress& p) { p.completedBytes += static_cast<std::int64_t>(filled); });
            if (cancellation_.isCancelled())
                return Stop{};
        }
        if (compressed >= limit32 || out_.offset() >= limit32)
            return Stop{ZipError::zip64Unsupported().errorDescription()};
        record.crc = crc.value();
        record.compressed = static_cast<std::uint32_t>(compressed);
        record.uncompressed = static_cast<std::uint32_t>(uncompressed);
        return std::nullopt;
    }

    // Takes back the member's header and data, so that a skipped member leaves nothing behind.
    Problem rewound(std::uint32_t offset, Problem problem)
    {
        if (std::holds_alternative<Skip>(problem)) {
            if (auto back = out_.rewind(offset); !back)
                return writeFailed(archive_, back.error());
        }
        return problem;
    }

    ArchiveOutput& out_;
    const fs::path& archive_;
    const CancellationToken& cancellation_;
    OperationProgressTracker& progress_;
    std::string buffer_;
    std::optional<DeflateStream> stream_;
};

std::string centralDirectory(const std::vector<CentralRecord>& records)
{
    std::string out;
    ByteWriter w(out);
    for (const auto& r : records) {
        w.u32(centralSignature);
        w.u16(versionMadeBy);
        w.u16(versionNeeded);
        w.u16(r.flags);
        w.u16(r.method);
        w.u16(r.date.time);
        w.u16(r.date.date);
        w.u32(r.crc);
        w.u32(r.compressed);
        w.u32(r.uncompressed);
        w.u16(static_cast<std::uint16_t>(r.path.size()));
        w.u16(0); // extra field length
        w.u16(0); // comment length
        w.u16(0); // disk number start
        w.u16(0); // internal attributes
        w.u32(r.mode << 16 | (S_ISDIR(r.mode) ? 0x10u : 0u));
        w.u32(r.offset);
        w.bytes(r.path);
    }
    return out;
}

std::string endRecord(std::size_t count, std::uint64_t size, std::uint64_t offset)
{
    std::string out;
    ByteWriter w(out);
    w.u32(endSignature);
    w.u16(0);
    w.u16(0);
    w.u16(static_cast<std::uint16_t>(count));
    w.u16(static_cast<std::uint16_t>(count));
    w.u32(static_cast<std::uint32_t>(size));
    w.u32(static_cast<std::uint32_t>(offset));
    w.u16(0);
    return out;
}

// Writes every member and the directory; returns what stopped the run, if anything did.
std::optional<Stop> writeArchive(ArchiveOutput& out, const std::vector<Entry>& entries, const fs::path& archive,
                                 const CancellationToken& cancellation, OperationProgressTracker& progress,
                                 OperationReport& report, std::vector<bool>& written)
{
    MemberWriter writer(out, archive, cancellation, progress);
    std::vector<CentralRecord> records;
    records.reserve(entries.size());
    for (const auto& entry : entries) {
        if (cancellation.isCancelled())
            return Stop{};
        progress.update([&](OperationProgress& p) { p.setCurrentPath(entry.source.native()); });
        auto result = writer.write(entry);
        if (auto* record = std::get_if<CentralRecord>(&result)) {
            records.push_back(std::move(*record));
            written[entry.top] = true;
        } else {
            auto& problem = std::get<Problem>(result);
            if (auto* stop = std::get_if<Stop>(&problem))
                return std::move(*stop);
            report.failures.push_back(std::move(std::get<Skip>(problem).failure));
        }
        progress.update([](OperationProgress& p) { ++p.completedItems; });
    }
    const std::uint64_t directoryOffset = out.offset();
    const std::string directory = centralDirectory(records);
    if (directoryOffset + directory.size() > limit32 - 1)
        return Stop{ZipError::zip64Unsupported().errorDescription()};
    if (auto appended = out.append(directory); !appended)
        return std::get<Stop>(writeFailed(archive, appended.error()));
    if (auto appended = out.append(endRecord(records.size(), directory.size(), directoryOffset)); !appended)
        return std::get<Stop>(writeFailed(archive, appended.error()));
    if (auto finished = out.finish(); !finished)
        return std::get<Stop>(writeFailed(archive, finished.error()));
    return std::nullopt;
}

} // namespace

OperationReport compress(const std::vector<fs::path>& sources, const fs::path& archive,
                         const CancellationToken& cancellation, OperationProgressTracker& progress)
{
    OperationReport report;
    std::int64_t bytes = 0;
    const auto entries = ZipWriterEntries::collect(sources, bytes, report);
    // Both limits are known before anything is written: no archive appears for a refused run.
    if (entries.size() > maximumEntries) {
        report.abortReason = ZipError::zip64Unsupported().errorDescription();
        return report;
    }
    for (const auto& entry : entries) {
        if (entry.kind == Entry::Kind::file && static_cast<std::uint64_t>(entry.size) >= limit32) {
            report.abortReason = ZipError::tooLarge(entry.path).errorDescription();
            return report;
        }
    }
    progress.update([&](OperationProgress& p) {
        p.totalItems = static_cast<std::int64_t>(entries.size());
        p.totalBytes = bytes;
        p.phase = OperationProgress::Phase::working;
    });

    OwnedFd fd(::open(archive.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!fd.isOpen()) {
        report.failures.push_back({archive, FileOperationError::system(errno, "create the archive", archive)});
        return report;
    }
    ArchiveOutput out(std::move(fd));
    std::vector<bool> written(sources.size(), false);
    if (auto stop = writeArchive(out, entries, archive, cancellation, progress, report, written)) {
        // Our own incomplete output is the one thing we delete outright.
        ::unlink(archive.c_str());
        if (stop->reason)
            report.abortReason = std::move(stop->reason);
        else
            report.cancelled = true;
        return report;
    }
    for (std::size_t i = 0; i < sources.size(); ++i)
        if (written[i])
            report.completed.push_back({sources[i], archive});
    report.undoChanges.push_back(UndoChange::created(archive, ItemStamp::of(archive)));
    progress.update([](OperationProgress& p) { p.phase = OperationProgress::Phase::finished; });
    return report;
}

} // namespace orbisk::ZipWriter
