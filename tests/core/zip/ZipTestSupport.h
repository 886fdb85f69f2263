// Shared by the ZIP tests: running our writer and reader on real folders, and reading their results.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "operations/OperationReport.h"
#include "zip/ZipReader.h"
#include "zip/ZipWriter.h"

namespace orbisk::test {

inline OperationReport compress(const std::vector<std::filesystem::path>& sources, const std::filesystem::path& archive)
{
    CancellationToken token;
    OperationProgressTracker progress;
    return ZipWriter::compress(sources, archive, token, progress);
}

inline OperationReport extract(const std::filesystem::path& archive, const std::filesystem::path& into)
{
    CancellationToken token;
    OperationProgressTracker progress;
    return ZipReader::extract(archive, into, token, progress);
}

inline std::vector<std::string> messages(const OperationReport& report)
{
    std::vector<std::string> texts;
    for (const auto& failure : report.failures)
        texts.push_back(failure.message());
    return texts;
}

inline std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Entries of folder whose names begin with the staging prefix.
inline std::vector<std::string> stagingLeftIn(const std::filesystem::path& folder)
{
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename().native().starts_with(".ob-extract-"))
            found.push_back(entry.path().filename().native());
    return found;
}

/// Links under root (root itself included) whose target, followed by the kernel where it exists
/// and by text where it does not, lies outside root.
inline std::vector<std::string> linksLeaving(const std::filesystem::path& root)
{
    namespace fs = std::filesystem;
    std::vector<std::string> leaving;
    const fs::path base = fs::canonical(root.parent_path()) / root.filename();
    const auto check = [&](const fs::path& link) {
        const fs::path resolved = fs::weakly_canonical(link.parent_path() / fs::read_symlink(link));
        const auto [end, _] = std::ranges::mismatch(base, resolved);
        if (end != base.end())
            leaving.push_back(link.native());
    };
    if (fs::is_symlink(root)) {
        check(root);
        return leaving;
    }
    if (!fs::is_directory(root))
        return leaving;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it)
        if (it->is_symlink())
            check(it->path());
    return leaving;
}

inline mode_t modeOf(const std::filesystem::path& path)
{
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status.st_mode;
}

} // namespace orbisk::test
