// Benchmark driver: copies a file or a whole tree the way the copy command will, through FileCopier.
//
//   copy_files SOURCE DESTINATION
//
// DESTINATION must not exist. Folders are created owner-only and get their metadata after their
// contents, links are copied as links, regular files go through FileCopier::copyFile. Prints the
// first failure and exits with status 1.
#include "platform/FileCopier.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <expected>
#include <filesystem>
#include <iostream>

namespace {

namespace fs = std::filesystem;
using orbisk::CopyError;

std::expected<void, CopyError> copyEntry(const fs::path& from, const fs::path& to);

std::expected<void, CopyError> copyFolder(const fs::path& from, const fs::path& to)
{
    if (auto created = orbisk::FileCopier::createFolder(to); !created)
        return created;
    DIR* folder = ::opendir(from.c_str());
    if (!folder)
        return std::unexpected(CopyError::system(orbisk::CopyStep::openSource, errno, from));
    std::expected<void, CopyError> result;
    while (const dirent* entry = ::readdir(folder)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        result = copyEntry(from / entry->d_name, to / entry->d_name);
        if (!result)
            break;
    }
    ::closedir(folder);
    if (!result)
        return result;
    return orbisk::FileCopier::copyFolderMetadata(from, to);
}

std::expected<void, CopyError> copyEntry(const fs::path& from, const fs::path& to)
{
    struct stat status {};
    if (::lstat(from.c_str(), &status) != 0)
        return std::unexpected(CopyError::system(orbisk::CopyStep::inspectSource, errno, from));
    if (S_ISDIR(status.st_mode))
        return copyFolder(from, to);
    if (S_ISLNK(status.st_mode))
        return orbisk::FileCopier::copyLink(from, to);
    auto copied = orbisk::FileCopier::copyFile(from, to);
    if (!copied)
        return std::unexpected(copied.error());
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: copy_files SOURCE DESTINATION\n";
        return 2;
    }
    if (auto result = copyEntry(argv[1], argv[2]); !result) {
        const CopyError& error = result.error();
        std::cerr << "copy_files: cannot " << orbisk::stepName(error.step) << " " << error.path.native() << ": "
                  << (error.kind == CopyError::Kind::unsupportedFileType ? "unsupported file type"
                                                                         : std::strerror(error.code))
                  << "\n";
        return 1;
    }
    return 0;
}
