// A fresh temporary folder per test, with one-line makers for the awkward cases.
#pragma once

#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

namespace orbisk::test {

namespace fs = std::filesystem;

/// A folder under $TMPDIR (or /tmp) that lives as long as the object. It is removed afterwards,
/// unless the current test failed: then it is kept and its path printed.
class TempTree {
public:
    explicit TempTree(const fs::path& parent = {});
    ~TempTree();
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    [[nodiscard]] const fs::path& root() const { return root_; }
    [[nodiscard]] fs::path operator/(std::string_view relative) const { return root_ / relative; }

    /// Makers; relative paths may hold any bytes, parents are created as needed.
    fs::path file(std::string_view relative, std::string_view contents = {});
    fs::path folder(std::string_view relative);
    fs::path link(std::string_view relative, std::string_view target);
    fs::path fifo(std::string_view relative);

    /// Sets the modification time (and access time) of an entry without following links.
    void setModificationTime(std::string_view relative, std::time_t seconds, long nanoseconds = 0);

    [[nodiscard]] std::string read(std::string_view relative) const;
    [[nodiscard]] bool exists(std::string_view relative) const;

private:
    fs::path root_;
};

/// Removes a tree even where tests took away permissions (chmod 000).
void removeTree(const fs::path& path);

/// Whether both paths are on one volume (device), so that a test of crossing volumes must skip.
[[nodiscard]] bool onSameVolume(const fs::path& a, const fs::path& b);

} // namespace orbisk::test
