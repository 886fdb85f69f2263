// Shared by the undo tests: a private Trash for the test and a picture of a folder's contents.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

#include "support/TempTree.h"

namespace orbisk::test {

/// Points HOME and XDG_DATA_HOME into tree for the life of the object, so that the Trash the
/// program finds by itself is the test's own.
class PrivateTrash {
public:
    explicit PrivateTrash(const TempTree& tree) : trash_(tree / "data/Trash")
    {
        remember("HOME", (tree / "home").native());
        remember("XDG_DATA_HOME", (tree / "data").native());
    }
    ~PrivateTrash()
    {
        for (const auto& [name, value] : saved_) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    PrivateTrash(const PrivateTrash&) = delete;
    PrivateTrash& operator=(const PrivateTrash&) = delete;

    [[nodiscard]] const std::filesystem::path& folder() const { return trash_; }

private:
    void remember(const std::string& name, const std::string& value)
    {
        const char* old = std::getenv(name.c_str());
        saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
        ::setenv(name.c_str(), value.c_str(), 1);
    }

    std::filesystem::path trash_;
    std::map<std::string, std::optional<std::string>> saved_;
};

/// Every entry under folder (hidden ones too) by relative path: "dir/" for folders, "-> target"
/// for links, otherwise the file's contents. Two equal pictures mean nothing was added, removed,
/// renamed or rewritten.
inline std::map<std::string, std::string> picture(const std::filesystem::path& folder)
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> entries;
    if (!fs::exists(fs::symlink_status(folder)))
        return entries;
    for (auto it = fs::recursive_directory_iterator(folder); it != fs::recursive_directory_iterator(); ++it) {
        const auto relative = it->path().lexically_relative(folder).native(); // never through a link
        if (it->is_symlink())
            entries[relative] = "-> " + fs::read_symlink(it->path()).native();
        else if (it->is_directory())
            entries[relative + "/"] = "";
        else {
            std::ifstream in(it->path(), std::ios::binary);
            entries[relative] = {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        }
    }
    return entries;
}

} // namespace orbisk::test
