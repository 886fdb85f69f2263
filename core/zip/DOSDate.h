// MS-DOS date and time fields of ZIP headers: local wall-clock time, two-second steps, 1980–2107.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace orbisk::DOSDate {

struct Fields {
    std::uint16_t time = 0; ///< hour << 11 | minute << 5 | second / 2
    std::uint16_t date = 0; ///< (year - 1980) << 9 | month << 5 | day
    bool operator==(const Fields&) const = default;
};

/// The fields of a moment in the current time zone. Years before 1980 become 1980; a year after
/// 2107 does not fit the seven bits of the year and gives nothing, so that the caller refuses the item.
[[nodiscard]] std::optional<Fields> encode(std::time_t seconds);

/// The moment the fields name in the current time zone, or nothing when they name no valid date
/// (month 0 or 13, day 0, hour 24, …).
[[nodiscard]] std::optional<std::time_t> decode(std::uint16_t time, std::uint16_t date);

} // namespace orbisk::DOSDate
