// Small helpers shared by the file copier's tests: random contents, statuses, folder listings.
#pragma once

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/CopyError.h"

namespace orbisk::test {

inline std::string randomBytes(std::size_t size, unsigned seed = 7)
{
    std::mt19937_64 generator(seed);
    std::string bytes(size + 8, '\0');
    for (std::size_t at = 0; at < size; at += 8) {
        const std::uint64_t word = generator();
        std::memcpy(bytes.data() + at, &word, 8);
    }
    bytes.resize(size);
    return bytes;
}

/// The whole contents of a file, read in one go (large files are compared in these tests).
inline std::string readAll(const std::filesystem::path& path)
{
    std::string contents;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return "<unreadable>";
    char buffer[1 << 16];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        contents.append(buffer, got);
    std::fclose(file);
    return contents;
}

inline struct stat statusOf(const std::filesystem::path& path)
{
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

/// The names in a folder, sorted; a copy that failed or was cancelled must leave it as it was.
inline std::vector<std::string> namesIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().native());
    std::ranges::sort(names);
    return names;
}

inline std::string describe(const CopyError& error)
{
    return std::string(stepName(error.step)) + " " + error.path.native() + ": errno " + std::to_string(error.code);
}

} // namespace orbisk::test
