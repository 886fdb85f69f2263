#include "operations/CrossVolumeMove.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "platform/ExclusiveRename.h"
#include "platform/FileCopier.h"
#include "support/Uuid.h"

namespace orbisk::CrossVolumeMove {

namespace fs = std::filesystem;

namespace {

/// Copies one entry and, for a folder, everything in it; the folder's own metadata comes last,
/// once nothing more is written into it.
std::expected<void, int> copyTree(const fs::path& from, const fs::path& to)
{
    struct stat st {};
    if (::lstat(from.c_str(), &st) != 0)
        return std::unexpected(errno);
    if (S_ISREG(st.st_mode)) {
        auto copied = FileCopier::copyFile(from, to);
        if (!copied)
            return std::unexpected(copied.error().code != 0 ? copied.error().code : ENOTSUP);
        return {};
    }
    if (S_ISLNK(st.st_mode)) {
        if (auto copied = FileCopier::copyLink(from, to); !copied)
            return std::unexpected(copied.error().code);
        return {};
    }
    if (!S_ISDIR(st.st_mode))
        return std::unexpected(ENOTSUP);
    if (auto created = FileCopier::createFolder(to); !created)
        return std::unexpected(created.error().code);
    std::error_code error;
    for (fs::directory_iterator it(from, error), end; !error && it != end; it.increment(error)) {
        if (auto copied = copyTree(it->path(), to / it->path().filename()); !copied)
            return copied;
    }
    if (error)
        return std::unexpected(error.value());
    if (auto applied = FileCopier::copyFolderMetadata(from, to); !applied)
        return std::unexpected(applied.error().code);
    return {};
}

} // namespace

std::expected<void, Failure> move(const fs::path& from, const fs::path& to)
{
    const auto staging = to.parent_path() / (".orbisk-undo-" + Uuid::random());
    std::error_code ignored;
    if (auto copied = copyTree(from, staging); !copied) {
        fs::remove_all(staging, ignored);
        return std::unexpected(Failure{copied.error(), false});
    }
    if (auto renamed = ExclusiveRename::rename(staging, to); !renamed) {
        fs::remove_all(staging, ignored);
        return std::unexpected(Failure{renamed.error(), false});
    }
    std::error_code removal;
    fs::remove_all(from, removal);
    if (removal)
        return std::unexpected(Failure{removal.value(), true});
    return {};
}

} // namespace orbisk::CrossVolumeMove
