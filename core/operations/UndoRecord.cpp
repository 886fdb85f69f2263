#include "operations/UndoRecord.h"

#include <unicode/utf8.h>

#include <algorithm>

namespace orbisk {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

/// Bytes as valid UTF-8 text: "%" and every byte outside valid UTF-8 become "%XX"; everything else
/// stays readable as it is.
std::string escaped(std::string_view bytes)
{
    constexpr char hex[] = "0123456789ABCDEF";
    std::string text;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto length = static_cast<int32_t>(bytes.size());
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c = 0;
        U8_NEXT(data, i, length, c);
        if (c < 0 || c == '%') {
            text += '%';
            text += hex[data[start] >> 4];
            text += hex[data[start] & 0x0F];
            i = start + 1;
        } else
            text.append(bytes.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
    }
    return text;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::expected<std::string, std::string> unescaped(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::unexpected("a bad “%” escape in “" + std::string(text) + "”");
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return bytes;
}

Json stampJson(const std::optional<ItemStamp>& stamp)
{
    if (!stamp)
        return nullptr;
    return Json{{"device", stamp->device},
                {"inode", stamp->inode},
                {"isDirectory", stamp->isDirectory},
                {"size", stamp->size},
                {"modified", stamp->modified}};
}

struct Reader {
    const Json& object;
    std::string where;

    std::expected<void, std::string> onlyKeys(std::initializer_list<std::string_view> keys) const
    {
        if (!object.is_object())
            return std::unexpected(where + " is not an object");
        for (const auto& [key, value] : object.items()) {
            if (std::ranges::find(keys, key) == keys.end())
                return std::unexpected(where + " has an unknown key “" + key + "”");
        }
        for (const auto key : keys) {
            if (!object.contains(key))
                return std::unexpected(where + " lacks “" + std::string(key) + "”");
        }
        return {};
    }

    std::expected<std::string, std::string> text(const char* key) const
    {
        const auto& value = object.at(key);
        if (!value.is_string())
            return std::unexpected(where + "." + key + " is not a text");
        return unescaped(value.get_ref<const std::string&>());
    }

    template <class T> std::expected<T, std::string> number(const char* key) const
    {
        const auto& value = object.at(key);
        const bool fits = std::is_unsigned_v<T> ? value.is_number_unsigned() : value.is_number_integer();
        if (!fits)
            return std::unexpected(where + "." + key + " is not a suitable integer");
        return value.get<T>();
    }
};

std::expected<std::optional<ItemStamp>, std::string> readStamp(const Json& json, const std::string& where)
{
    if (json.is_null())
        return std::nullopt;
    const Reader reader{json, where};
    if (auto keys = reader.onlyKeys({"device", "inode", "isDirectory", "size", "modified"}); !keys)
        return std::unexpected(keys.error());
    if (!json.at("isDirectory").is_boolean())
        return std::unexpected(where + ".isDirectory is not true or false");
    auto device = reader.number<std::uint64_t>("device");
    auto inode = reader.number<std::uint64_t>("inode");
    auto size = reader.number<std::int64_t>("size");
    auto modified = reader.number<std::int64_t>("modified");
    if (!device)
        return std::unexpected(device.error());
    if (!inode)
        return std::unexpected(inode.error());
    if (!size)
        return std::unexpected(size.error());
    if (!modified)
        return std::unexpected(modified.error());
    return ItemStamp{*device, *inode, json.at("isDirectory").get<bool>(), *size, *modified};
}

std::expected<UndoChange, std::string> readChange(const Json& json, const std::string& where)
{
    if (!json.is_object() || !json.contains("kind") || !json.at("kind").is_string())
        return std::unexpected(where + " has no kind");
    const auto kind = json.at("kind").get<std::string>();
    const Reader reader{json, where};
    if (kind == "created") {
        if (auto keys = reader.onlyKeys({"kind", "at", "stamp"}); !keys)
            return std::unexpected(keys.error());
        auto at = reader.text("at");
        auto stamp = readStamp(json.at("stamp"), where + ".stamp");
        if (!at)
            return std::unexpected(at.error());
        if (!stamp)
            return std::unexpected(stamp.error());
        return UndoChange::created(fs::path(*at), *stamp);
    }
    if (kind == "moved") {
        if (auto keys = reader.onlyKeys({"kind", "from", "to", "stamp"}); !keys)
            return std::unexpected(keys.error());
        auto from = reader.text("from");
        auto to = reader.text("to");
        auto stamp = readStamp(json.at("stamp"), where + ".stamp");
        if (!from)
            return std::unexpected(from.error());
        if (!to)
            return std::unexpected(to.error());
        if (!stamp)
            return std::unexpected(stamp.error());
        return UndoChange::moved(fs::path(*from), fs::path(*to), *stamp);
    }
    if (kind == "trashed") {
        // Records written before trashed items kept their stamp have none; they still read.
        const bool stamped = json.contains("stamp");
        auto keys = stamped ? reader.onlyKeys({"kind", "original", "inTrash", "stamp"})
                            : reader.onlyKeys({"kind", "original", "inTrash"});
        if (!keys)
            return std::unexpected(keys.error());
        auto original = reader.text("original");
        auto inTrash = reader.text("inTrash");
        std::expected<std::optional<ItemStamp>, std::string> stamp = std::nullopt;
        if (stamped)
            stamp = readStamp(json.at("stamp"), where + ".stamp");
        if (!original)
            return std::unexpected(original.error());
        if (!inTrash)
            return std::unexpected(inTrash.error());
        if (!stamp)
            return std::unexpected(stamp.error());
        return UndoChange::trashed(fs::path(*original), fs::path(*inTrash), *stamp);
    }
    if (kind == "removedFolder") {
        if (auto keys = reader.onlyKeys({"kind", "at", "mode"}); !keys)
            return std::unexpected(keys.error());
        auto at = reader.text("at");
        auto mode = reader.number<std::uint64_t>("mode");
        if (!at)
            return std::unexpected(at.error());
        if (!mode || *mode > 07777)
            return std::unexpected(where + ".mode is not a file mode");
        return UndoChange::removedFolder(fs::path(*at), static_cast<unsigned>(*mode));
    }
    return std::unexpected(where + " has an unknown kind “" + kind + "”");
}

struct ChangeWriter {
    Json operator()(const UndoChange::Created& c) const
    {
        return Json{{"kind", "created"}, {"at", escaped(c.at.native())}, {"stamp", stampJson(c.stamp)}};
    }
    Json operator()(const UndoChange::Moved& c) const
    {
        return Json{{"kind", "moved"},
                    {"from", escaped(c.from.native())},
                    {"to", escaped(c.to.native())},
                    {"stamp", stampJson(c.stamp)}};
    }
    Json operator()(const UndoChange::Trashed& c) const
    {
        return Json{{"kind", "trashed"},
                    {"original", escaped(c.original.native())},
                    {"inTrash", escaped(c.inTrash.native())},
                    {"stamp", stampJson(c.stamp)}};
    }
    Json operator()(const UndoChange::RemovedFolder& c) const
    {
        return Json{{"kind", "removedFolder"}, {"at", escaped(c.at.native())}, {"mode", c.mode}};
    }
};

} // namespace

Json UndoRecord::toJson() const
{
    Json list = Json::array();
    for (const auto& change : changes)
        list.push_back(std::visit(ChangeWriter{}, change.change));
    return Json{{"name", escaped(name)}, {"changes", std::move(list)}};
}

std::expected<UndoRecord, std::string> UndoRecord::fromJson(const Json& json)
{
    const Reader reader{json, "record"};
    if (auto keys = reader.onlyKeys({"name", "changes"}); !keys)
        return std::unexpected(keys.error());
    auto name = reader.text("name");
    if (!name)
        return std::unexpected(name.error());
    if (!json.at("changes").is_array())
        return std::unexpected("record.changes is not a list");
    UndoRecord record{std::move(*name), {}};
    for (std::size_t i = 0; i < json.at("changes").size(); ++i) {
        auto change = readChange(json.at("changes").at(i), "record.changes[" + std::to_string(i) + "]");
        if (!change)
            return std::unexpected(change.error());
        record.changes.push_back(std::move(*change));
    }
    return record;
}

} // namespace orbisk
