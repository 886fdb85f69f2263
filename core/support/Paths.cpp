#include "support/Paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

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
    const std::string text(typed);
    if (text.empty())
        return folderPath(base);
    if (text == "~")
        return folderPath(home());
    if (text.starts_with("~/"))
        return folderPath(home() / text.substr(2));
    if (text.starts_with("/"))
        return folderPath(text);
    return folderPath(base / text);
}

namespace {
std::optional<fs::path> realFolder(const fs::path& folder)
{
    char buffer[PATH_MAX];
    if (!::realpath(folder.c_str(), buffer))
        return std::nullopt;
    return fs::path(buffer);
}
} // namespace

fs::path itemPath(const fs::path& path)
{
    std::error_code ignored; // without a current folder a relative path stays relative and fails later
    const fs::path absolute = path.is_absolute() ? path : fs::current_path(ignored) / path;
    std::vector<std::string> given;
    for (const auto& component : absolute.relative_path())
        if (!component.empty())
            given.push_back(component.native());
    if (given.empty())
        return absolute.root_path().empty() ? absolute : absolute.root_path();
    // "." adds nothing inside a path; as the last component it is kept for callers to refuse.
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < given.size(); ++i)
        if (given[i] != "." || i + 1 == given.size())
            parts.push_back(std::move(given[i]));
    // The kernel reads "x/.." as the parent of what x really is: the folders up to the last ".." are
    // resolved by the kernel; the names after it (and the item itself) stay as given.
    std::size_t climbs = 0;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
        if (parts[i] == "..")
            climbs = i + 1;
    fs::path folder = absolute.root_path();
    for (std::size_t i = 0; i < climbs; ++i)
        folder /= parts[i];
    if (climbs > 0) {
        if (auto real = realFolder(folder))
            folder = std::move(*real);
    }
    for (std::size_t i = climbs; i + 1 < parts.size(); ++i)
        folder /= parts[i];
    return folder / parts.back();
}

fs::path folderPath(const fs::path& path)
{
    const auto item = itemPath(path);
    const auto last = item.filename();
    if (last == ".")
        return item.parent_path();
    if (last == "..")
        return realFolder(item).value_or(item);
    return item;
}

bool endsInDotOrDotDot(const fs::path& path)
{
    std::string_view text = path.native();
    while (text.size() > 1 && text.back() == '/')
        text.remove_suffix(1);
    const auto slash = text.rfind('/');
    const auto last = slash == std::string_view::npos ? text : text.substr(slash + 1);
    return last == "." || last == "..";
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
    std::string text = path.native();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    const auto slash = text.rfind('/');
    if (slash == std::string::npos || slash == 0)
        return "/";
    text.resize(slash);
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
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
