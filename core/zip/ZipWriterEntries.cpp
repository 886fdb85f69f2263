#include "zip/ZipWriterEntries.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "operations/FileOperationError.h"

namespace orbisk::ZipWriterEntries {

namespace fs = std::filesystem;

namespace {

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};

void collectOne(const fs::path& source, const std::string& name, std::size_t top, std::vector<Entry>& entries,
                std::int64_t& bytes, OperationReport& report)
{
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0) {
        const int code = errno;
        report.failures.push_back({source, code == ENOENT ? FileOperationError::itemMissing(source)
                                                          : FileOperationError::system(code, "read", source)});
        return;
    }
    if (S_ISLNK(status.st_mode)) {
        entries.push_back({source, name, Entry::Kind::link, 0, top});
    } else if (S_ISREG(status.st_mode)) {
        entries.push_back({source, name, Entry::Kind::file, status.st_size, top});
        bytes += status.st_size;
    } else if (S_ISDIR(status.st_mode)) {
        std::unique_ptr<DIR, DirCloser> dir(::opendir(source.c_str()));
        if (!dir) {
            report.failures.push_back({source, FileOperationError::system(errno, "read", source)});
            return;
        }
        entries.push_back({source, name + "/", Entry::Kind::folder, 0, top});
        std::vector<std::string> children;
        errno = 0;
        while (const dirent* child = ::readdir(dir.get())) {
            const std::string_view childName = child->d_name;
            if (childName != "." && childName != "..")
                children.emplace_back(childName);
            errno = 0;
        }
        if (errno != 0)
            report.failures.push_back({source, FileOperationError::system(errno, "read", source)});
        dir.reset();
        // Sorted by their bytes, so that the same folder always gives the same archive.
        std::ranges::sort(children);
        // The listing is read whole before descending, so that at most one folder is open at a time.
        for (const auto& child : children)
            collectOne(source / child, name + "/" + child, top, entries, bytes, report);
    } else {
        report.failures.push_back({source, FileOperationError::unsupportedFileType(source)});
    }
}

} // namespace

std::vector<Entry> collect(const std::vector<fs::path>& sources, std::int64_t& bytes, OperationReport& report)
{
    std::vector<Entry> entries;
    bytes = 0;
    for (std::size_t i = 0; i < sources.size(); ++i)
        collectOne(sources[i], sources[i].filename().native(), i, entries, bytes, report);
    return entries;
}

} // namespace orbisk::ZipWriterEntries
