// Shared by the transfer engine tests: a small second volume, a picture of a tree, one run.
#pragma once

#include <sys/mount.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "operations/TransferEngine.h"

namespace orbisk::test {

/// A tmpfs of a given size mounted on a fresh folder, for a full volume or a second volume.
class SmallTmpfs {
public:
    explicit SmallTmpfs(const std::filesystem::path& folder, const std::string& size) : folder_(folder)
    {
        std::filesystem::create_directories(folder_);
        mounted_ = ::mount("tmpfs", folder_.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
    }
    ~SmallTmpfs()
    {
        if (mounted_)
            ::umount2(folder_.c_str(), MNT_DETACH);
    }
    SmallTmpfs(const SmallTmpfs&) = delete;
    SmallTmpfs& operator=(const SmallTmpfs&) = delete;
    [[nodiscard]] bool mounted() const { return mounted_; }

private:
    std::filesystem::path folder_;
    bool mounted_ = false;
};

/// A bind mount of one folder on another, undone on destruction; mounted() is false without root.
class BindMount {
public:
    BindMount(const std::filesystem::path& from, const std::filesystem::path& onto) : onto_(onto)
    {
        mounted_ = ::mount(from.c_str(), onto_.c_str(), nullptr, MS_BIND, nullptr) == 0;
    }
    ~BindMount()
    {
        if (mounted_)
            ::umount2(onto_.c_str(), MNT_DETACH);
    }
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;
    [[nodiscard]] bool mounted() const { return mounted_; }

private:
    std::filesystem::path onto_;
    bool mounted_ = false;
};

/// Every entry below folder, relative to it, sorted.
inline std::vector<std::string> entriesBelow(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(entry.path().lexically_relative(folder).native());
    std::ranges::sort(names);
    return names;
}

/// Runs one engine over sources, after configure has set it up.
inline OperationReport
transfer(TransferEngine::Kind kind, std::vector<std::filesystem::path> sources,
         const std::filesystem::path& destination,
         const std::function<void(TransferEngine&, CancellationToken&, OperationProgressTracker&)>& configure = {})
{
    CancellationToken token;
    OperationProgressTracker progress;
    TransferEngine engine(kind, std::move(sources), destination, token, progress);
    if (configure)
        configure(engine, token, progress);
    return engine.run();
}

} // namespace orbisk::test
