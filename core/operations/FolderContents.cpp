#include "operations/FolderContents.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cstring>

namespace orbisk::FolderContents {

namespace fs = std::filesystem;

std::vector<FolderEntry> of(const fs::path& folder)
{
    std::vector<FolderEntry> entries;
    const auto top = ItemStamp::of(folder);
    if (!top || !top->isDirectory)
        return entries;
    // Folders still to read, by relative path; one listing is open at a time, however deep.
    std::vector<fs::path> pending{fs::path()};
    while (!pending.empty()) {
        const fs::path relative = std::move(pending.back());
        pending.pop_back();
        const fs::path here = relative.empty() ? folder : folder / relative;
        std::vector<fs::path> names;
        if (DIR* listing = ::opendir(here.c_str())) {
            while (const dirent* entry = ::readdir(listing))
                if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                    names.emplace_back(entry->d_name);
            ::closedir(listing);
        }
        for (auto& name : names) {
            fs::path path = relative.empty() ? std::move(name) : relative / name;
            const auto stamp = ItemStamp::of(folder / path);
            if (!stamp)
                continue;
            if (stamp->isDirectory && stamp->device == top->device)
                pending.push_back(path);
            entries.push_back({std::move(path), *stamp});
        }
    }
    return entries;
}

} // namespace orbisk::FolderContents
