// Kind texts for the list and the sort, with type descriptions from the MIME database.
#pragma once

#include "files/FileItem.h"
#include "files/FileKind.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace orbisk {

class KindTexts {
public:
    KindTexts();
    ~KindTexts();

    /// The kind text of item. Texts are kept per (flags, lowercased extension) for as long as this
    /// object lives, so a folder of 200,000 photos asks the MIME database once, and sorting by
    /// kind again asks it never. Any thread; the text stays valid as long as this object.
    [[nodiscard]] const std::string& describe(const FileItem& item);

    /// The MIME database's localised comment for a file-name extension, or nothing.
    [[nodiscard]] static std::optional<std::string> typeDescription(std::string_view extension);

private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::string> cache_; ///< nodes never move, so references last
};

} // namespace orbisk
