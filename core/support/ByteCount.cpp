#include "support/ByteCount.h"

#include <array>
#include <cstdio>

#include "support/L10n.h"

namespace orbisk {

std::string formatByteCount(std::int64_t bytes)
{
    if (bytes == 1)
        return L(translate("Orbisk", "%lld byte"), bytes);
    if (bytes < 1000)
        return L(translate("Orbisk", "%lld bytes"), bytes);
    static constexpr std::array units{"kB", "MB", "GB", "TB", "PB", "EB"};
    double value = static_cast<double>(bytes) / 1000.0;
    std::size_t unit = 0;
    // Round first so that 999,960 bytes reads "1.0 MB", not "1000.0 kB".
    while (unit + 1 < units.size() && value >= 999.95) {
        value /= 1000.0;
        ++unit;
    }
    char number[32];
    std::snprintf(number, sizeof number, value < 99.95 ? "%.1f" : "%.0f", value);
    return std::string(number) + " " + units[unit];
}

} // namespace orbisk
