// The order of a listing: which column and which direction, as stored in settings and sessions.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// The columns a listing can be sorted by. The raw values are the case names; `date` is the
/// content modification date.
enum class SortColumn { name, size, date, kind };

/// "name", "size", "date" or "kind".
[[nodiscard]] std::string_view rawValue(SortColumn column);

/// The column whose raw value is exactly raw; nothing for any other text.
[[nodiscard]] std::optional<SortColumn> sortColumnFromRaw(std::string_view raw);

struct SortSpec {
    SortColumn column = SortColumn::name;
    bool ascending = true;

    friend bool operator==(const SortSpec&, const SortSpec&) = default;

    /// {"column":"size","ascending":false}
    [[nodiscard]] nlohmann::ordered_json toJson() const;
    [[nodiscard]] std::string encoded() const { return toJson().dump(); }

    /// Reads exactly the two keys, "column" (a raw value) and "ascending" (a Boolean, not a
    /// number). Anything else (an unknown column, a missing, extra or repeated key, a value of
    /// another type, text that is not JSON) gives nothing, and the caller keeps its default.
    [[nodiscard]] static std::optional<SortSpec> fromJson(const nlohmann::ordered_json& json);
    [[nodiscard]] static std::optional<SortSpec> decode(std::string_view text);
};

} // namespace orbisk
