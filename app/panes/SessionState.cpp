#include "panes/SessionState.h"

#include "support/DisplayText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace orbisk::SessionCoding {
namespace {

using Json = nlohmann::ordered_json;

std::filesystem::path storablePath(std::filesystem::path path)
{
    while (DisplayText::visible(path.native()) != path.native() && path != path.parent_path())
        path = path.parent_path();
    return path;
}

Json encodePane(const PaneSession& pane)
{
    Json tabs = Json::array();
    for (const auto& tab : pane.tabs) {
        tabs.push_back(Json{{"path", storablePath(tab.path).native()}, {"sort", tab.sort.toJson()}});
    }
    return Json{{"tabs", tabs}, {"activeTab", pane.activeTab}};
}

std::optional<PaneSession> decodePane(const Json& json)
{
    if (!json.is_object() || !json.contains("tabs") || !json["tabs"].is_array() || !json.contains("activeTab") ||
        !json["activeTab"].is_number_integer())
        return std::nullopt;
    PaneSession pane;
    for (const auto& tab : json["tabs"]) {
        if (!tab.is_object() || !tab.contains("path") || !tab["path"].is_string() || !tab.contains("sort"))
            return std::nullopt;
        std::filesystem::path path = tab["path"].get<std::string>();
        if (!path.is_absolute())
            return std::nullopt;
        const auto sort = SortSpec::fromJson(tab["sort"]);
        if (!sort)
            return std::nullopt;
        pane.tabs.push_back({std::move(path), *sort});
    }
    if (pane.tabs.empty())
        return std::nullopt;
    pane.activeTab = std::clamp(json["activeTab"].get<int>(), 0, static_cast<int>(pane.tabs.size()) - 1);
    return pane;
}

} // namespace

std::string encode(const SessionState& state)
{
    const Json json{{"left", encodePane(state.left)},
                    {"right", encodePane(state.right)},
                    {"activeIsRight", state.activeIsRight},
                    {"dividerRatio", state.dividerRatio}};
    return json.dump();
}

std::optional<SessionState> decode(std::string_view text)
{
    try {
        const auto json = Json::parse(text);
        if (!json.is_object() || !json.contains("activeIsRight") || !json["activeIsRight"].is_boolean() ||
            !json.contains("dividerRatio") || !json["dividerRatio"].is_number())
            return std::nullopt;
        auto left = decodePane(json.value("left", Json()));
        auto right = decodePane(json.value("right", Json()));
        const double ratio = json["dividerRatio"].get<double>();
        if (!left || !right || !std::isfinite(ratio))
            return std::nullopt;
        return SessionState{std::move(*left), std::move(*right), json["activeIsRight"].get<bool>(),
                            std::clamp(ratio, 0.1, 0.9)};
    } catch (const nlohmann::json::exception&) {
        // Undecodable data: the panes start at their defaults.
        return std::nullopt;
    }
}

} // namespace orbisk::SessionCoding
