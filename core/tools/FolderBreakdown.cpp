#include "tools/FolderBreakdown.h"

#include <sys/stat.h>

#include <algorithm>

#include "files/DirectoryReader.h"

namespace orbisk::FolderBreakdown {
namespace {

template <class Field> std::int64_t sum(const std::vector<Entry>& entries, Field field)
{
    std::int64_t total = 0;
    for (const auto& entry : entries)
        total += entry.size.*field;
    return total;
}

bool needsMeasuring(const Entry& entry)
{
    return entry.isDirectory && !entry.isOtherVolume && !entry.isSymbolicLink;
}

} // namespace

std::int64_t Report::totalBytes() const
{
    return sum(entries, &FolderSize::Result::bytes);
}

std::int64_t Report::totalFiles() const
{
    return sum(entries, &FolderSize::Result::files);
}

std::int64_t Report::totalFolders() const
{
    return sum(entries, &FolderSize::Result::folders);
}

std::int64_t Report::unreadable() const
{
    return sum(entries, &FolderSize::Result::unreadable);
}

std::int64_t Report::cloudOnly() const
{
    return sum(entries, &FolderSize::Result::cloudOnly);
}

double Report::share(const Entry& entry) const
{
    const auto total = totalBytes();
    return total > 0 ? static_cast<double>(entry.size.bytes) / static_cast<double>(total) : 0.0;
}

std::int64_t Report::measuredFolders() const
{
    return std::ranges::count_if(entries, [](const Entry& e) { return needsMeasuring(e) && e.isComplete; });
}

std::int64_t Report::foldersToMeasure() const
{
    return std::ranges::count_if(entries, needsMeasuring);
}

Report compute(const std::filesystem::path& folder, const CancellationToken& cancellation, const Update& update)
{
    Report report;
    report.folder = folder;
    const auto publish = [&] {
        if (update)
            update(report);
    };
    struct stat own {};
    auto children = DirectoryReader::read(folder, true);
    if (!children || ::stat(folder.c_str(), &own) != 0) {
        report.readError = children ? std::error_code(errno, std::generic_category()) : children.error();
        report.isComplete = true;
        publish();
        return report;
    }

    // In name order, so that a file hard-linked under two children is always counted with the same one.
    std::ranges::sort(*children, {}, &FileItem::name);
    FolderSize::InodeSet seenHardLinks;
    FolderSize::InodeSet seenFolders{static_cast<std::uint64_t>(own.st_ino)};
    report.entries.reserve(children->size());
    for (const auto& child : *children) {
        Entry entry;
        entry.url = child.url();
        entry.name = child.name();
        entry.isHidden = child.isHidden;
        entry.isSymbolicLink = child.isSymbolicLink;
        entry.isPackage = child.isPackage;
        struct stat status {};
        if (::lstat(entry.url.c_str(), &status) != 0) {
            entry.size.unreadable = 1;
            entry.isComplete = true;
        } else if (S_ISDIR(status.st_mode)) {
            entry.isDirectory = true;
            entry.isOtherVolume = status.st_dev != own.st_dev;
            entry.isComplete = entry.isOtherVolume;
        } else {
            // Files are counted now, through the same sets as the folders' contents, so that two
            // names for one file count once in the totals.
            const CancellationToken never;
            (void)FolderSize::accumulate(entry.url, own.st_dev, seenHardLinks, seenFolders, entry.size, never);
            entry.isComplete = true;
        }
        report.entries.push_back(std::move(entry));
    }
    publish();

    for (auto& entry : report.entries) {
        if (!needsMeasuring(entry))
            continue;
        const FolderSize::Progress progress = [&](const FolderSize::Result& running) {
            entry.size = running;
            publish();
        };
        FolderSize::Result result;
        const bool finished =
            FolderSize::accumulate(entry.url, own.st_dev, seenHardLinks, seenFolders, result, cancellation, progress);
        entry.size = result;
        if (!finished) {
            publish();
            return report;
        }
        entry.isComplete = true;
        publish();
    }
    report.isComplete = true;
    publish();
    return report;
}

} // namespace orbisk::FolderBreakdown
