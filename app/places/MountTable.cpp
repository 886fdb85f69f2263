#include "places/MountTable.h"

#include "support/Paths.h"

#include <fstream>
#include <sstream>

namespace orbisk::MountTable {
namespace {

// mountinfo escapes space, tab, newline and backslash in paths as a backslash and three octal digits.
std::string unescaped(std::string_view field)
{
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2]) &&
            isOctal(field[i + 3])) {
            out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

std::vector<std::string_view> fields(std::string_view line)
{
    std::vector<std::string_view> out;
    std::size_t start = 0;
    while (start < line.size()) {
        const auto end = line.find(' ', start);
        const auto piece = line.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (!piece.empty())
            out.push_back(piece);
        if (end == std::string_view::npos)
            break;
        start = end + 1;
    }
    return out;
}

} // namespace

std::vector<Mount> parse(std::string_view mountinfo)
{
    // "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue"
    std::vector<Mount> mounts;
    std::size_t start = 0;
    while (start < mountinfo.size()) {
        auto end = mountinfo.find('\n', start);
        if (end == std::string_view::npos)
            end = mountinfo.size();
        const auto parts = fields(mountinfo.substr(start, end - start));
        start = end + 1;
        std::size_t separator = 6;
        while (separator < parts.size() && parts[separator] != "-")
            ++separator;
        if (parts.size() < 5 || separator + 2 >= parts.size())
            continue;
        mounts.push_back({unescaped(parts[4]), std::string(parts[separator + 1]), unescaped(parts[separator + 2])});
    }
    return mounts;
}

std::vector<Mount> current()
{
    std::ifstream in("/proc/self/mountinfo", std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return parse(text.str());
}

std::filesystem::path mountPointOf(const std::filesystem::path& path, const std::vector<Mount>& mounts)
{
    std::filesystem::path best = "/";
    for (const auto& mount : mounts) {
        if (mount.mountPoint.native().size() > best.native().size() && Paths::isSameOrInside(path, mount.mountPoint))
            best = mount.mountPoint;
    }
    return best;
}

bool isMounted(const std::filesystem::path& mountPoint, const std::vector<Mount>& mounts)
{
    for (const auto& mount : mounts) {
        if (mount.mountPoint == mountPoint)
            return true;
    }
    return false;
}

std::vector<Mount> userVolumes(const std::vector<Mount>& mounts)
{
    std::vector<Mount> volumes;
    for (const auto& mount : mounts) {
        const auto& point = mount.mountPoint;
        if (point == "/media" || point == "/mnt" || point == "/run/media")
            continue;
        if (Paths::isSameOrInside(point, "/media") || Paths::isSameOrInside(point, "/run/media") ||
            Paths::isSameOrInside(point, "/mnt")) {
            if (!isMounted(point, volumes))
                volumes.push_back(mount);
        }
    }
    return volumes;
}

} // namespace orbisk::MountTable
