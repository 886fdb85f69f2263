#include "operations/ItemStamp.h"

#include <sys/stat.h>

namespace orbisk {

std::optional<ItemStamp> ItemStamp::of(const std::filesystem::path& path)
{
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0)
        return std::nullopt;
    return ItemStamp{static_cast<std::uint64_t>(st.st_dev), static_cast<std::uint64_t>(st.st_ino), S_ISDIR(st.st_mode),
                     static_cast<std::int64_t>(st.st_size),
                     static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec};
}

bool ItemStamp::matches(const std::optional<ItemStamp>& other) const
{
    if (!other || device != other->device || inode != other->inode)
        return false;
    if (isDirectory || other->isDirectory)
        return isDirectory && other->isDirectory;
    return size == other->size && modified == other->modified;
}

} // namespace orbisk
