#include "tools/FolderSize.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "tools/TreeWalk.h"

namespace orbisk::FolderSize {
namespace {

/// Counts each entry from one fstatat relative to its folder.
class Measure final : public TreeWalk::Visitor {
public:
    Measure(dev_t device, InodeSet& seenHardLinks, InodeSet& seenFolders, Result& into,
            const CancellationToken& cancellation, const Progress& progress)
        : device_(device), seenHardLinks_(seenHardLinks), seenFolders_(seenFolders), into_(into),
          cancellation_(cancellation), progress_(progress)
    {
    }

    /// Counts one item by its own status; true when a folder new to this measurement was
    /// counted, so that its contents are to be read.
    bool count(const struct stat& status)
    {
        if (status.st_dev != device_)
            return false; // another volume is mounted here: neither it nor its contents count
        if (S_ISDIR(status.st_mode)) {
            if (!seenFolders_.insert(status.st_ino).second)
                return false;
            ++into_.folders;
            return true;
        }
        if (S_ISREG(status.st_mode)) {
            if (status.st_nlink > 1 && !seenHardLinks_.insert(status.st_ino).second)
                return false;
            ++into_.files;
            into_.bytes += status.st_size;
        }
        // Links, sockets, fifos and devices take no space worth counting and are not followed.
        return false;
    }

    bool enter(const struct stat&) override { return true; }

    TreeWalk::Step visit(TreeWalk::Folder& folder, const TreeWalk::Entry& entry) override
    {
        if (++items_ % checkInterval == 0 && !checkpoint())
            return TreeWalk::Step::stop;
        struct stat status {};
        if (::fstatat(folder.fd(), entry.name.data(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            ++into_.unreadable;
            return TreeWalk::Step::skip;
        }
        return count(status) ? TreeWalk::Step::descend : TreeWalk::Step::skip;
    }

    void unreadable(TreeWalk::Folder*, std::string_view, int) override { ++into_.unreadable; }

    /// Reads the token and publishes the running result; false when cancelled.
    bool checkpoint()
    {
        if (cancellation_.isCancelled())
            return false;
        if (progress_)
            progress_(into_);
        return true;
    }

private:
    dev_t device_;
    InodeSet& seenHardLinks_;
    InodeSet& seenFolders_;
    Result& into_;
    const CancellationToken& cancellation_;
    const Progress& progress_;
    std::int64_t items_ = 0;
};

} // namespace

Result& Result::operator+=(const Result& other)
{
    bytes += other.bytes;
    files += other.files;
    folders += other.folders;
    unreadable += other.unreadable;
    cloudOnly += other.cloudOnly;
    return *this;
}

Result compute(const std::filesystem::path& folder, const CancellationToken& cancellation, const Progress& progress)
{
    Result result;
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0) {
        result.unreadable = 1;
        return result;
    }
    InodeSet seenHardLinks;
    InodeSet seenFolders;
    Measure measure(status.st_dev, seenHardLinks, seenFolders, result, cancellation, progress);
    if (!S_ISDIR(status.st_mode)) {
        measure.count(status);
        return result;
    }
    seenFolders.insert(status.st_ino);
    TreeWalk walk(folder);
    if (walk.run(measure))
        measure.checkpoint();
    return result;
}

bool accumulate(const std::filesystem::path& path, dev_t device, InodeSet& seenHardLinks, InodeSet& seenFolders,
                Result& into, const CancellationToken& cancellation, const Progress& progress)
{
    if (cancellation.isCancelled())
        return false;
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        ++into.unreadable;
        return true;
    }
    Measure measure(device, seenHardLinks, seenFolders, into, cancellation, progress);
    if (!measure.count(status))
        return true;
    TreeWalk walk(path);
    return walk.run(measure) && measure.checkpoint();
}

} // namespace orbisk::FolderSize
