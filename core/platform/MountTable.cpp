#include "platform/MountTable.h"

#include <algorithm>

#include <sys/sysmacros.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <optional>

namespace orbisk {

namespace {

// Fields of mountinfo are separated by spaces; the kernel writes space, tab, newline and
// backslash inside a field as three octal digits ("\040").
std::string unescape(std::string_view field)
{
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        const auto digit = [&](std::size_t at) { return field[at] >= '0' && field[at] <= '7'; };
        if (field[i] == '\\' && i + 3 < field.size() && digit(i + 1) && digit(i + 2) && digit(i + 3)) {
            out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
            i += 3;
            continue;
        }
        out += field[i];
    }
    return out;
}

std::vector<std::string_view> splitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    while (start < line.size()) {
        auto end = line.find(' ', start);
        if (end == std::string_view::npos)
            end = line.size();
        if (end > start)
            fields.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    return fields;
}

std::optional<dev_t> parseDevice(std::string_view text)
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size())
        return std::nullopt;
    unsigned long major = 0, minor = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == colon)
            continue;
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        auto& part = i < colon ? major : minor;
        part = part * 10 + static_cast<unsigned long>(text[i] - '0');
    }
    return makedev(major, minor);
}

// "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw": id, parent, device, root,
// mount point, options, optional fields up to "-", then type, source and super-block options.
std::optional<MountEntry> parseLine(std::string_view line)
{
    const auto fields = splitFields(line);
    if (fields.size() < 6)
        return std::nullopt;
    std::size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-")
        ++separator;
    if (separator + 1 >= fields.size())
        return std::nullopt;
    const auto device = parseDevice(fields[2]);
    if (!device || !fields[4].starts_with('/'))
        return std::nullopt;
    MountEntry entry;
    entry.device = *device;
    entry.root = unescape(fields[3]);
    entry.mountPoint = unescape(fields[4]);
    entry.fileSystemType = unescape(fields[separator + 1]);
    if (separator + 2 < fields.size())
        entry.source = unescape(fields[separator + 2]);
    return entry;
}

// Whether prefix is path or one of its enclosing folders, by whole components.
bool leads(const std::string& prefix, const std::string& path)
{
    if (prefix == "/")
        return path.starts_with('/');
    return path.starts_with(prefix) && (path.size() == prefix.size() || path[prefix.size()] == '/');
}

} // namespace

std::expected<MountTable, int> MountTable::read(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::unexpected(errno ? errno : ENOENT);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    return parse(text);
}

MountTable MountTable::parse(std::string_view text)
{
    std::vector<MountEntry> entries;
    std::size_t start = 0;
    while (start < text.size()) {
        auto end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        if (auto entry = parseLine(text.substr(start, end - start)))
            entries.push_back(std::move(*entry));
        start = end + 1;
    }
    return MountTable(std::move(entries));
}

const MountEntry* MountTable::mountOf(const std::filesystem::path& realPath) const
{
    const MountEntry* best = nullptr;
    for (const auto& entry : entries_) {
        // ">=" lets a later mount at the same place, which hides the earlier one, win.
        if (leads(entry.mountPoint.native(), realPath.native()) &&
            (!best || entry.mountPoint.native().size() >= best->mountPoint.native().size()))
            best = &entry;
    }
    return best;
}

std::filesystem::path MountTable::mountPointOf(const std::filesystem::path& path) const
{
    const auto* entry = mountOf(path);
    return entry ? entry->mountPoint : std::filesystem::path("/");
}

const MountEntry* MountTable::mountAtOrBelow(const std::filesystem::path& realPath) const
{
    for (const auto& entry : entries_)
        if (leads(realPath.native(), entry.mountPoint.native()))
            return &entry;
    return nullptr;
}

bool MountTable::isMounted(const std::filesystem::path& mountPoint) const
{
    return std::ranges::any_of(entries_, [&](const MountEntry& e) { return e.mountPoint == mountPoint; });
}

std::vector<MountEntry> MountTable::userVolumes() const
{
    std::vector<MountEntry> volumes;
    for (const auto& entry : entries_) {
        const auto& point = entry.mountPoint;
        if (point == "/media" || point == "/mnt" || point == "/run/media")
            continue;
        const bool underUserPlace =
            leads("/media", point.native()) || leads("/run/media", point.native()) || leads("/mnt", point.native());
        const bool listed = std::ranges::any_of(volumes, [&](const MountEntry& v) { return v.mountPoint == point; });
        if (underUserPlace && !listed)
            volumes.push_back(entry);
    }
    return volumes;
}

} // namespace orbisk
