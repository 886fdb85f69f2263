// What identifies the version of a file the editor loaded: device, inode, size and modification time.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace orbisk {

/// A plain value compared field by field; any difference means someone else changed the file.
struct FileStamp {
    std::int32_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modificationSeconds = 0;
    std::int64_t modificationNanoseconds = 0;

    /// The stamp of a file status.
    [[nodiscard]] static FileStamp of(const struct stat& status);

    bool operator==(const FileStamp&) const = default;
};

/// The stamp of the file at path, following links; nothing when its status cannot be read.
[[nodiscard]] std::optional<FileStamp> stamp(const std::filesystem::path& path);

} // namespace orbisk
