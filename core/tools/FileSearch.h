// Finding items under a folder by name, and by content, streamed to the caller in batches.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "files/FileItem.h"
#include "operations/CancellationToken.h"
#include "tools/ContentMatcher.h"

namespace orbisk {

struct FileSearchOptions {
    /// Empty matches everything; with "*" or "?" a ";"-separated wildcard list; otherwise a
    /// name-contains text (case and diacritics ignored).
    std::string pattern;
    bool includeHidden = false;  ///< dot-names and names in a folder's .hidden file, and what they hold
    bool searchPackages = false; ///< Linux has no packages: folders are always searched
    std::int64_t maxResults = 10'000;
    /// When not empty, only regular files holding this text match (binary files are skipped).
    std::string containing;
    bool regularExpression = false; ///< containing is an ICU regular expression
    bool caseSensitive = false;     ///< for containing; names always ignore case
    std::size_t batchSize = 200;
    std::chrono::milliseconds batchInterval{250};
    std::size_t blockSize = 1 << 20; ///< the read buffer of the content search
    /// Whether each match is described as a pane lists it (size, date, link target), at one
    /// status call more per match; without it an item has its location and folder flag only.
    bool describeMatches = true;
};

struct FileSearchSummary {
    std::int64_t scanned = 0;           ///< items looked at
    std::int64_t matched = 0;           ///< matches reported
    std::int64_t unreadableFolders = 0; ///< folders that could not be opened or listed
    std::int64_t unreadableFiles = 0;   ///< files whose content could not be read
    std::int64_t binaryFiles = 0;       ///< files a content search skipped as binary
    bool truncated = false;             ///< stopped at maxResults
    bool cancelled = false;

    bool operator==(const FileSearchSummary&) const = default;
};

/// One match: the item as a pane lists it and, for a content search, the first matching line.
struct FoundItem {
    FileItem item;
    std::optional<ContentMatch> content;

    bool operator==(const FoundItem&) const = default;
};

namespace FileSearch {

/// Receives matches on the searching thread, in batches of batchSize or whatever was found within
/// batchInterval, and what is left at the end.
using ResultsHandler = std::function<void(std::vector<FoundItem> batch)>;

/// Walks root (no index), reporting folders first-level first, links as items never followed, and
/// each folder once even if a bind mount shows it twice. The token is read every 256 items and
/// between blocks of a file. Fails only for a regular expression that does not compile; an
/// unreadable root counts as an unreadable folder. Blocking; any thread.
[[nodiscard]] std::expected<FileSearchSummary, ExpressionError> run(const std::filesystem::path& root,
                                                                    const FileSearchOptions& options,
                                                                    const CancellationToken& cancellation,
                                                                    const ResultsHandler& onResults);

} // namespace FileSearch
} // namespace orbisk
