#include "text/FileStamp.h"

namespace orbisk {

FileStamp FileStamp::of(const struct stat& status)
{
    return {static_cast<std::int32_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
            static_cast<std::int64_t>(status.st_size), static_cast<std::int64_t>(status.st_mtim.tv_sec),
            static_cast<std::int64_t>(status.st_mtim.tv_nsec)};
}

std::optional<FileStamp> stamp(const std::filesystem::path& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileStamp::of(status);
}

} // namespace orbisk
