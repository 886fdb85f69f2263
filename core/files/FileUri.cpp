#include "files/FileUri.h"

#include "support/PercentEncoding.h"

#include <algorithm>
#include <cctype>

namespace orbisk::FileUri {
namespace {

constexpr std::string_view scheme = "file://";

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::ranges::equal(a, b, [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

} // namespace

std::string fromPath(const std::filesystem::path& absolutePath)
{
    return std::string(scheme) + percentEncoded(absolutePath.native());
}

std::optional<std::filesystem::path> toPath(std::string_view uri)
{
    if (uri.size() < scheme.size() || !equalIgnoringCase(uri.substr(0, scheme.size()), scheme))
        return std::nullopt;
    auto rest = uri.substr(scheme.size());
    const auto slash = rest.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const auto host = rest.substr(0, slash);
    if (!host.empty() && !equalIgnoringCase(host, "localhost"))
        return std::nullopt;
    rest = rest.substr(slash);
    // A query or fragment has no meaning for a local file; '#' and '?' in names arrive escaped.
    if (const auto end = rest.find_first_of("?#"); end != std::string_view::npos)
        rest = rest.substr(0, end);

    auto path = percentDecoded(rest);
    if (!path)
        return std::nullopt;
    return std::filesystem::path(std::move(*path));
}

std::string listFromPaths(const std::vector<std::filesystem::path>& paths)
{
    std::string out;
    for (const auto& path : paths) {
        out += fromPath(path);
        out += "\r\n";
    }
    return out;
}

std::vector<std::filesystem::path> pathsFromList(std::string_view list)
{
    std::vector<std::filesystem::path> paths;
    while (!list.empty()) {
        const auto end = list.find('\n');
        auto line = list.substr(0, end);
        list = end == std::string_view::npos ? std::string_view{} : list.substr(end + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#')
            continue;
        if (auto path = toPath(line))
            paths.push_back(std::move(*path));
    }
    return paths;
}

} // namespace orbisk::FileUri
