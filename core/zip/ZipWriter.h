// Writes files, folders and links into one new ZIP archive (classic format, no ZIP64).
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "operations/CancellationToken.h"
#include "operations/OperationProgressTracker.h"
#include "operations/OperationReport.h"

namespace orbisk::ZipWriter {

/// The most members an archive without ZIP64 holds: its count fields stop at 0xFFFF, which
/// itself means "see the ZIP64 record".
inline constexpr std::size_t maximumEntries = 0xFFFE;

/// Writes sources (in the order given; folders with everything inside, hidden names too; links as
/// links) into a new archive at `archive`, created exclusively: an existing file is never touched.
/// Members are named from each source's last component; a folder comes before its contents. Items
/// that cannot be read or are special files become failures and the rest is written. Too many
/// members, an item of 4 GB or more, an archive that would pass 4 GB, a write error, or a
/// cancellation end the run and remove the partial archive; the report then carries the reason
/// (abortReason) or `cancelled`. On success the report lists each source against the archive and
/// holds the archive's creation for undo. Runs on the caller's thread; polls cancellation before
/// each member and after each mebibyte read; never throws.
[[nodiscard]] OperationReport compress(const std::vector<std::filesystem::path>& sources,
                                       const std::filesystem::path& archive, const CancellationToken& cancellation,
                                       OperationProgressTracker& progress);

} // namespace orbisk::ZipWriter
