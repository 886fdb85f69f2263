#include "files/SortSpec.h"

#include <array>
#include <set>
#include <utility>
#include <vector>

namespace orbisk {
namespace {

constexpr std::array<std::pair<SortColumn, std::string_view>, 4> rawValues{{
    {SortColumn::name, "name"},
    {SortColumn::size, "size"},
    {SortColumn::date, "date"},
    {SortColumn::kind, "kind"},
}};

} // namespace

std::string_view rawValue(SortColumn column)
{
    for (const auto& [c, raw] : rawValues)
        if (c == column)
            return raw;
    return "name";
}

std::optional<SortColumn> sortColumnFromRaw(std::string_view raw)
{
    for (const auto& [c, value] : rawValues)
        if (value == raw)
            return c;
    return std::nullopt;
}

nlohmann::ordered_json SortSpec::toJson() const
{
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["column"] = rawValue(column);
    json["ascending"] = ascending;
    return json;
}

std::optional<SortSpec> SortSpec::fromJson(const nlohmann::ordered_json& json)
{
    if (!json.is_object() || json.size() != 2)
        return std::nullopt;
    const auto column = json.find("column");
    const auto ascending = json.find("ascending");
    if (column == json.end() || ascending == json.end() || !column->is_string() || !ascending->is_boolean())
        return std::nullopt;
    const auto parsed = sortColumnFromRaw(column->get_ref<const std::string&>());
    if (!parsed)
        return std::nullopt;
    return SortSpec{*parsed, ascending->get<bool>()};
}

std::optional<SortSpec> SortSpec::decode(std::string_view text)
{
    // nlohmann keeps the last of two equal keys; a stored spec with both is damaged, not a choice.
    std::vector<std::set<std::string>> keysByDepth;
    bool repeated = false;
    const nlohmann::ordered_json::parser_callback_t refuseRepeatedKeys =
        [&](int depth, nlohmann::ordered_json::parse_event_t event, nlohmann::ordered_json& parsed) {
            using Event = nlohmann::ordered_json::parse_event_t;
            const auto level = static_cast<std::size_t>(depth);
            if (event == Event::object_start) {
                keysByDepth.resize(level + 1);
                keysByDepth[level].clear();
            } else if (event == Event::key && level >= 1 && level - 1 < keysByDepth.size()) {
                repeated = repeated || !keysByDepth[level - 1].insert(parsed.get<std::string>()).second;
            }
            return true;
        };
    const auto json = nlohmann::ordered_json::parse(text.begin(), text.end(), refuseRepeatedKeys, false);
    if (json.is_discarded() || repeated)
        return std::nullopt;
    return fromJson(json);
}

} // namespace orbisk
