// What goes into an archive: the members found under the sources, in writing order.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "operations/OperationReport.h"

namespace orbisk::ZipWriterEntries {

struct Entry {
    enum class Kind { folder, file, link };
    std::filesystem::path source; ///< the item on disk
    std::string path;             ///< the member name, "/" between components; a folder's ends in "/"
    Kind kind = Kind::file;
    std::int64_t size = 0; ///< bytes of a file when it was listed
    std::size_t top = 0;   ///< index of the source this member came from
};

/// Walks the sources without following links: each folder before its contents, the contents in
/// the order of their names' bytes. Unreadable items and special files are added to report as
/// failures and left out. bytes receives the total size of the files.
[[nodiscard]] std::vector<Entry> collect(const std::vector<std::filesystem::path>& sources, std::int64_t& bytes,
                                         OperationReport& report);

} // namespace orbisk::ZipWriterEntries
