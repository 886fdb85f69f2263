#include "tools/FileSearch.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <set>
#include <unordered_set>
#include <utility>

#include "platform/OwnedFd.h"
#include "tools/NameMatcher.h"
#include "tools/TreeWalk.h"

namespace orbisk {
namespace {

constexpr std::int64_t checkInterval = 256;
constexpr std::size_t hiddenListLimit = 1 << 20;

/// The names a folder's .hidden file lists, one per line, byte-exact.
std::unordered_set<std::string> readHiddenList(int folderFd)
{
    std::unordered_set<std::string> names;
    const OwnedFd fd(::openat(folderFd, ".hidden", O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW));
    struct stat status {};
    if (!fd.isOpen() || ::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > hiddenListLimit)
        return names;
    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    const auto got = ::read(fd.get(), contents.data(), contents.size());
    contents.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    for (std::size_t start = 0; start < contents.size();) {
        auto end = contents.find('\n', start);
        if (end == std::string::npos)
            end = contents.size();
        if (end > start)
            names.emplace(contents, start, end - start);
        start = end + 1;
    }
    return names;
}

FileItem::Date dateOf(const struct stat& status)
{
    return FileItem::Date(std::chrono::seconds(status.st_mtim.tv_sec) +
                          std::chrono::nanoseconds(status.st_mtim.tv_nsec));
}

class Search final : public TreeWalk::Visitor {
public:
    Search(const FileSearchOptions& options, std::optional<ContentMatcher> content,
           const CancellationToken& cancellation, const FileSearch::ResultsHandler& onResults)
        : options_(options), names_(options.pattern), content_(std::move(content)), cancellation_(cancellation),
          onResults_(onResults), lastHandOver_(std::chrono::steady_clock::now())
    {
    }

    FileSearchSummary summary;

    void rememberRoot(const struct stat& status) { seenFolders_.emplace(status.st_dev, status.st_ino); }

    bool enter(const struct stat& status) override
    {
        // Without links nothing is reached twice, except through a bind mount, which could even
        // lead back into itself.
        return seenFolders_.emplace(status.st_dev, status.st_ino).second;
    }

    TreeWalk::Step visit(TreeWalk::Folder& folder, const TreeWalk::Entry& entry) override
    {
        ++summary.scanned;
        if (summary.scanned % checkInterval == 0) {
            if (cancellation_.isCancelled()) {
                summary.cancelled = true;
                return TreeWalk::Step::stop;
            }
            handOverIfDue();
        }
        const bool hidden = entry.name.front() == '.' || isListedHidden(folder, entry.name);
        if (hidden && !options_.includeHidden)
            return TreeWalk::Step::skip;

        unsigned char type = entry.type;
        std::optional<struct stat> status;
        if (type == DT_UNKNOWN) {
            status = statOf(folder, entry.name);
            type = !status                    ? DT_UNKNOWN
                   : S_ISDIR(status->st_mode) ? DT_DIR
                   : S_ISREG(status->st_mode) ? DT_REG
                                              : DT_LNK;
        }
        const auto next = type == DT_DIR ? TreeWalk::Step::descend : TreeWalk::Step::skip;
        if (!names_.matches(entry.name))
            return next;

        std::optional<ContentMatch> line;
        if (content_) {
            if (type != DT_REG)
                return next;
            line = searchContent(folder, entry.name);
            if (summary.cancelled)
                return TreeWalk::Step::stop;
            if (!line)
                return next;
        }
        report(folder, entry.name, type, hidden, status, std::move(line));
        if (cancellation_.isCancelled()) {
            // Checked at each match as well: a user who saw enough stops the search from its results.
            summary.cancelled = true;
            return TreeWalk::Step::stop;
        }
        if (summary.matched >= options_.maxResults) {
            summary.truncated = true;
            return TreeWalk::Step::stop;
        }
        return next;
    }

    void unreadable(TreeWalk::Folder*, std::string_view, int) override { ++summary.unreadableFolders; }

    void handOver()
    {
        if (!pending_.empty() && onResults_)
            onResults_(std::exchange(pending_, {}));
        pending_.clear();
        lastHandOver_ = std::chrono::steady_clock::now();
    }

private:
    void handOverIfDue()
    {
        if (!pending_.empty() && (pending_.size() >= options_.batchSize ||
                                  std::chrono::steady_clock::now() - lastHandOver_ >= options_.batchInterval))
            handOver();
    }

    static std::optional<struct stat> statOf(TreeWalk::Folder& folder, std::string_view name)
    {
        struct stat status {};
        if (::fstatat(folder.fd(), name.data(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return std::nullopt;
        return status;
    }

    bool isListedHidden(TreeWalk::Folder& folder, std::string_view name)
    {
        if (!folder.hasHiddenList())
            return false;
        const std::pair folderId(folder.status().st_dev, folder.status().st_ino);
        if (hiddenListOf_ != folderId) {
            hiddenListOf_ = folderId;
            hiddenList_ = readHiddenList(folder.fd());
        }
        return hiddenList_.contains(std::string(name));
    }

    std::optional<ContentMatch> searchContent(TreeWalk::Folder& folder, std::string_view name)
    {
        const OwnedFd fd(::openat(folder.fd(), name.data(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK));
        if (!fd.isOpen()) {
            ++summary.unreadableFiles;
            return std::nullopt;
        }
        auto found = content_->search(fd.get(), cancellation_);
        switch (found.outcome) {
        case ContentMatcher::Outcome::match: return std::move(found.match);
        case ContentMatcher::Outcome::binary: ++summary.binaryFiles; break;
        case ContentMatcher::Outcome::unreadable: ++summary.unreadableFiles; break;
        case ContentMatcher::Outcome::cancelled: summary.cancelled = true; break;
        case ContentMatcher::Outcome::noMatch: break;
        }
        return std::nullopt;
    }

    void report(TreeWalk::Folder& folder, std::string_view name, unsigned char type, bool hidden,
                std::optional<struct stat> status, std::optional<ContentMatch> line)
    {
        FoundItem found{FileItem(folder.path(), std::string(name)), std::move(line)};
        FileItem& item = found.item;
        item.isHidden = hidden;
        if (!options_.describeMatches && type != DT_UNKNOWN) {
            item.isDirectory = type == DT_DIR;
            pending_.push_back(std::move(found));
            ++summary.matched;
            handOverIfDue();
            return;
        }
        if (!status)
            status = statOf(folder, name);
        if (status) {
            item.isSymbolicLink = S_ISLNK(status->st_mode);
            bool directory = S_ISDIR(status->st_mode);
            if (item.isSymbolicLink) {
                struct stat target {};
                directory = ::fstatat(folder.fd(), name.data(), &target, 0) == 0 && S_ISDIR(target.st_mode);
            }
            item.isDirectory = directory;
            if (!directory)
                item.size = static_cast<std::int64_t>(status->st_size);
            item.modificationDate = dateOf(*status);
        }
        pending_.push_back(std::move(found));
        ++summary.matched;
        handOverIfDue();
    }

    const FileSearchOptions& options_;
    NameMatcher names_;
    std::optional<ContentMatcher> content_;
    const CancellationToken& cancellation_;
    const FileSearch::ResultsHandler& onResults_;
    std::vector<FoundItem> pending_;
    std::chrono::steady_clock::time_point lastHandOver_;
    std::set<std::pair<dev_t, ino_t>> seenFolders_;
    std::pair<dev_t, ino_t> hiddenListOf_{}; ///< the folder whose list hiddenList_ holds
    std::unordered_set<std::string> hiddenList_;
};

} // namespace

std::expected<FileSearchSummary, ExpressionError> FileSearch::run(const std::filesystem::path& root,
                                                                  const FileSearchOptions& options,
                                                                  const CancellationToken& cancellation,
                                                                  const ResultsHandler& onResults)
{
    std::optional<ContentMatcher> content;
    if (!options.containing.empty()) {
        auto made = ContentMatcher::create(options.containing, options.regularExpression, options.caseSensitive,
                                           options.blockSize);
        if (!made)
            return std::unexpected(made.error());
        content.emplace(std::move(*made));
    }
    Search search(options, std::move(content), cancellation, onResults);
    struct stat rootStatus {};
    if (::stat(root.c_str(), &rootStatus) == 0)
        search.rememberRoot(rootStatus);
    if (options.maxResults <= 0) {
        search.summary.truncated = true;
        return search.summary;
    }
    TreeWalk walk(root);
    walk.run(search);
    search.handOver();
    return search.summary;
}

} // namespace orbisk
