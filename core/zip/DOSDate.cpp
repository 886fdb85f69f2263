#include "zip/DOSDate.h"

namespace orbisk::DOSDate {

std::optional<Fields> encode(std::time_t seconds)
{
    std::tm parts{};
    if (!::localtime_r(&seconds, &parts)) {
        // Only for moments the C library cannot split: count them as the earliest DOS date.
        return Fields{0, static_cast<std::uint16_t>(1 << 5 | 1)};
    }
    const int year = parts.tm_year + 1900;
    if (year > 2107)
        return std::nullopt;
    // Only the year is clamped: a date of 1975 keeps its month and day in 1980.
    const int offset = year < 1980 ? 0 : year - 1980;
    const auto date = static_cast<std::uint16_t>(offset << 9 | (parts.tm_mon + 1) << 5 | parts.tm_mday);
    const auto time = static_cast<std::uint16_t>(parts.tm_hour << 11 | parts.tm_min << 5 | parts.tm_sec / 2);
    return Fields{time, date};
}

std::optional<std::time_t> decode(std::uint16_t time, std::uint16_t date)
{
    const int year = (date >> 9) + 1980;
    const int month = (date >> 5) & 0x0F;
    const int day = date & 0x1F;
    const int hour = time >> 11;
    const int minute = (time >> 5) & 0x3F;
    const int second = (time & 0x1F) * 2;
    if (month < 1 || month > 12 || day < 1 || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    const std::time_t result = ::mktime(&parts);
    // mktime normalises 31 February into March: such a date is not valid.
    if (result == static_cast<std::time_t>(-1) || parts.tm_mday != day || parts.tm_mon != month - 1)
        return std::nullopt;
    return result;
}

} // namespace orbisk::DOSDate
