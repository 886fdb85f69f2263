// The knobs, progress callback and outcomes shared by the file copier's stages.
#pragma once

#include <cstdint>
#include <functional>

namespace orbisk {

/// How a finished copy call ended when it did not fail.
enum class CopyOutcome : std::uint8_t {
    copied,    ///< the entry exists under its final name, data and metadata complete
    cancelled, ///< the progress callback said stop; nothing was left behind
};

/// The progress callback's answer.
enum class CopyControl : std::uint8_t { proceed, stop };

/// Called on the copying thread before the data copy starts (with 0) and after every chunk, with
/// the bytes of the file dealt with so far (holes that were skipped count as dealt with, so the
/// last call of a complete copy gives the file's size). Returning stop cancels the copy.
using CopyProgress = std::function<CopyControl(std::int64_t bytesDone)>;

/// The ways of moving data, fastest first. A copy starts with the one it is given and falls back
/// to the next when the file systems cannot do it.
enum class CopyMethod : std::uint8_t {
    clone,         ///< ioctl(FICLONE): share the extents (Btrfs, XFS with reflink, bcachefs)
    copyFileRange, ///< copy_file_range(2) per data extent: in-kernel, may be offloaded
    readWrite,     ///< pread/pwrite per data extent through a buffer
};

struct CopyOptions {
    /// Bytes moved before the first progress call (and cancellation check) of a file. While a
    /// chunk takes less than a twentieth of a second the next one is twice as large, up to
    /// largestChunkBytes, so that a large file is handed to the kernel in few calls while stopping
    /// stays quick however fast or slow the disks are. Read/write moves at most 128 KiB per call.
    std::int64_t chunkBytes = std::int64_t{8} << 20;
    /// The limit of that growth.
    std::int64_t largestChunkBytes = std::int64_t{1} << 30;
    /// The first method tried; tests and benchmarks start lower to measure the others.
    CopyMethod firstMethod = CopyMethod::clone;
    /// Write into an unnamed file (O_TMPFILE) that is linked in when complete; off, or where the
    /// file system cannot, the copy is written under a hidden temporary name and renamed.
    bool unnamedFile = true;
    /// Where set, receives after each copy the method worth starting the next copy between the
    /// same two file systems with: past the ones these file systems refused as a whole (not the
    /// ones only this file could not use). Left alone when the copy fails.
    CopyMethod* learnedMethod = nullptr;
};

} // namespace orbisk
