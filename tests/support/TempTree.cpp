#include "TempTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace orbisk::test {

TempTree::TempTree(const fs::path& parent)
{
    fs::path base = parent;
    if (base.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        base = tmp && *tmp ? tmp : "/tmp";
    }
    std::string pattern = (base / "orbisk-test-XXXXXX").native();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp failed under " + base.native());
    root_ = pattern;
}

TempTree::~TempTree()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    if (info && info->result()->Failed()) {
        std::cerr << "kept the test folder " << root_.native() << "\n";
        return;
    }
    removeTree(root_);
}

fs::path TempTree::file(std::string_view relative, std::string_view contents)
{
    const auto path = root_ / relative;
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path.native());
    return path;
}

fs::path TempTree::folder(std::string_view relative)
{
    const auto path = root_ / relative;
    fs::create_directories(path);
    return path;
}

fs::path TempTree::link(std::string_view relative, std::string_view target)
{
    const auto path = root_ / relative;
    fs::create_directories(path.parent_path());
    if (::symlink(std::string(target).c_str(), path.c_str()) != 0)
        throw std::runtime_error("cannot link " + path.native());
    return path;
}

fs::path TempTree::fifo(std::string_view relative)
{
    const auto path = root_ / relative;
    fs::create_directories(path.parent_path());
    if (::mkfifo(path.c_str(), 0644) != 0)
        throw std::runtime_error("cannot make fifo " + path.native());
    return path;
}

void TempTree::setModificationTime(std::string_view relative, std::time_t seconds, long nanoseconds)
{
    const auto path = root_ / relative;
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        throw std::runtime_error("cannot set time of " + path.native());
}

std::string TempTree::read(std::string_view relative) const
{
    std::ifstream in(root_ / relative, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool TempTree::exists(std::string_view relative) const
{
    struct stat st {};
    return ::lstat((root_ / relative).c_str(), &st) == 0;
}

void removeTree(const fs::path& path)
{
    std::error_code error;
    // Give back what tests took away, so that nothing is left behind.
    ::chmod(path.c_str(), 0700);
    for (auto it = fs::recursive_directory_iterator(path, fs::directory_options::skip_permission_denied, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_directory(error) && !it->is_symlink(error))
            ::chmod(it->path().c_str(), 0700);
    }
    fs::remove_all(path, error);
}

bool onSameVolume(const fs::path& a, const fs::path& b)
{
    struct stat first {};
    struct stat second {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev;
}

} // namespace orbisk::test
