// Moves the bytes of one open regular file into another, keeping holes, with progress and stop.
#pragma once

#include "platform/CopyError.h"
#include "platform/CopyOptions.h"

#include <sys/stat.h>

#include <expected>
#include <filesystem>

namespace orbisk::FileDataCopy {

/// Copies the data of the regular file open for reading on `source` into the empty file open
/// for writing on `destination`: a clone where both file systems allow it, else copy_file_range,
/// else pread/pwrite, each over the source's data extents only, so a sparse file stays sparse.
/// A source that reports size 0 (as files in /proc do) is read until its end. `status` is the
/// source's fstat. `from` and `to` only name the files in errors. Returns cancelled as soon as
/// progress says stop; the destination then holds a partial file the caller must remove.
/// ENOSPC and EDQUOT come back as writeDestination errors (CopyError::isVolumeFull).
[[nodiscard]] std::expected<CopyOutcome, CopyError> copy(int source, int destination, const struct stat& status,
                                                         const CopyOptions& options, const CopyProgress& progress,
                                                         const std::filesystem::path& from,
                                                         const std::filesystem::path& to);

} // namespace orbisk::FileDataCopy
