// The entries of one folder, read as they come or all at once, so that deep walks stay within
// the process's descriptor limit.
#pragma once

#include <dirent.h>

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {

/// Lists an open folder. Kept open, it reads entries as they are asked for, so that memory stays
/// flat in a huge folder, and holds one descriptor until it is destroyed. Not kept open, it reads
/// every name at once and closes at once, so that a walk can go deeper than it has descriptors.
/// "." and ".." are left out. Used from one thread.
class FolderListing {
public:
    struct Entry {
        std::string name;
        unsigned char type = DT_UNKNOWN; ///< as readdir gives it: DT_UNKNOWN where the file system says nothing
    };

    /// Takes over folderFd in every case (it is closed on failure). The errno of fdopendir or of
    /// reading when it fails.
    [[nodiscard]] static std::expected<FolderListing, int> open(int folderFd, bool keepOpen);

    FolderListing(FolderListing&& other) noexcept;
    FolderListing& operator=(FolderListing&& other) noexcept;
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;
    ~FolderListing();

    /// The next entry, or nothing at the end.
    [[nodiscard]] std::optional<Entry> next();

    /// The errno of a read that failed part way (the entries until then were given), else 0.
    [[nodiscard]] int error() const { return error_; }

private:
    FolderListing() = default;

    DIR* stream_ = nullptr;
    std::vector<Entry> entries_;
    std::size_t nextEntry_ = 0;
    int error_ = 0;
};

} // namespace orbisk
