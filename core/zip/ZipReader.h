// Lists the members of a ZIP archive and extracts them safely into a folder.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "operations/CancellationToken.h"
#include "operations/OperationProgressTracker.h"
#include "operations/OperationReport.h"
#include "zip/DeflateStream.h"
#include "zip/ZipError.h"

namespace orbisk::ZipReader {

/// One record of the central directory, as read.
struct Entry {
    std::string name;    ///< decoded (ZipNames::decodeName)
    std::string rawName; ///< the bytes as stored
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint32_t localHeaderOffset = 0;
    std::uint32_t externalAttributes = 0;
    bool madeByUnix = false; ///< the host byte of "version made by" is 3
    std::uint16_t dosTime = 0;
    std::uint16_t dosDate = 0;
    /// Where this member's bytes must end: the next member's local header, or the central
    /// directory. Members sharing bytes with another are marked overlapping and never read.
    std::uint64_t dataLimit = 0;
    bool overlapping = false;

    [[nodiscard]] bool isEncrypted() const { return (flags & 1) != 0; }
    [[nodiscard]] bool isFolder() const { return !name.empty() && (name.back() == '/' || name.back() == '\\'); }
    [[nodiscard]] bool isLink() const;
    /// The permission bits to give the extracted item: the Unix mode's 0777 part when the archive
    /// carries one, else fallback. Set-user-ID, set-group-ID and sticky bits are never returned.
    [[nodiscard]] unsigned permissions(unsigned fallback) const;
};

/// Reads and checks the central directory of the archive open at fd (which is only read with
/// pread, never moved). Fails with notAZip when no end record, or a directory that does not fit
/// the file or whose records are cut short; with zip64Unsupported when the archive needs ZIP64.
[[nodiscard]] std::expected<std::vector<Entry>, ZipError> entries(int fd);

/// Reads one member's data from the archive at fd, inflating when needed, and hands it on in
/// blocks to write (which returns 0 or an errno that ends the member). Stops as soon as the data
/// passes its declared size or its bounds in the archive. Errors: corrupt, unsupportedMethod,
/// checksumMismatch as ZipError; a write error or cancellation as the errno (ECANCELED).
using Sink = std::function<int(std::string_view block)>;
struct ReadFailure {
    std::optional<ZipError> zip; ///< the archive's fault
    int code = 0;                ///< the sink's or the system's errno, when not the archive's fault
};
/// inflater, when given, is reused (reset) rather than made anew for each member.
[[nodiscard]] std::expected<void, ReadFailure> readData(int fd, const Entry& entry,
                                                        const CancellationToken& cancellation, const Sink& write,
                                                        std::optional<DeflateStream>* inflater = nullptr);

/// Extracts the archive into the folder `into`: everything is unpacked into a hidden staging
/// folder ".ob-extract-<uuid>" there, checked, and only then moved into place under a free name
/// (the single top item's own name, or the archive's name without ".zip" for several). Members
/// with unsafe names, links that would leave the result, damaged or unsupported members become
/// failures and the rest is extracted. No member is ever written through a link; links are made
/// last and checked again on disk. A cancel or a run-ending error removes the staging folder and
/// leaves the destination as it was. The report names the created item (with its undo change).
/// Runs on the caller's thread, polls cancellation per member and per mebibyte; never throws.
[[nodiscard]] OperationReport extract(const std::filesystem::path& archive, const std::filesystem::path& into,
                                      const CancellationToken& cancellation, OperationProgressTracker& progress);

} // namespace orbisk::ZipReader
