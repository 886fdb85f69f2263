#include "support/Paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>

namespace orbisk::Paths {
namespace fs = std::filesystem;

fs::path home()
{
    if (const char* h = std::getenv("HOME"); h && *h)
        return h;
    if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir)
        return pw->pw_dir;
    return "/";
}

namespace {
fs::path normalised(const fs::path& path)
{
    auto result = path.lexically_normal();
    auto text = result.native();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text.empty() ? fs::path("/") : fs::path(text);
}
} // namespace

fs::path expandTypedPath(std::string_view typed, const fs::path& base)
{
    std::string text(typed);
    if (text.empty())
        return normalised(base);
    if (text == "~")
        return normalised(home());
    if (text.starts_with("~/"))
        return normalised(home() / text.substr(2));
    if (text.starts_with("/"))
        return normalised(text);
    return normalised(base / text);
}

bool isExistingFolder(const fs::path& path)
{
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isRealFolder(const fs::path& path)
{
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isSameOrInside(const fs::path& inner, const fs::path& outer)
{
    const auto a = normalised(inner);
    const auto b = normalised(outer);
    auto ai = a.begin();
    for (auto bi = b.begin(); bi != b.end(); ++bi, ++ai) {
        if (ai == a.end() || *ai != *bi)
            return false;
    }
    return true;
}

fs::path parentFolder(const fs::path& path)
{
    const auto n = normalised(path);
    return n == "/" ? n : normalised(n.parent_path());
}

fs::path nearestExistingFolder(const fs::path& path)
{
    auto candidate = normalised(path);
    while (!isExistingFolder(candidate) && candidate != "/")
        candidate = parentFolder(candidate);
    return candidate;
}

std::optional<VolumeCapacity> volumeCapacity(const fs::path& path)
{
    struct statvfs st {};
    if (::statvfs(path.c_str(), &st) != 0)
        return std::nullopt;
    return VolumeCapacity{static_cast<std::int64_t>(st.f_bavail) * static_cast<std::int64_t>(st.f_frsize),
                          static_cast<std::int64_t>(st.f_blocks) * static_cast<std::int64_t>(st.f_frsize)};
}

} // namespace orbisk::Paths
