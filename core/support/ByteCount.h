// Byte counts as file managers show them: decimal units ("1.2 GB").
#pragma once

#include <cstdint>
#include <string>

namespace orbisk {

/// "0 bytes", "1 byte", "999 bytes", "1.0 kB", "12.3 MB", "123 MB", "1.2 GB" … (units of 1000;
/// one decimal below 100, none above). Negative counts are shown as they are, in bytes.
[[nodiscard]] std::string formatByteCount(std::int64_t bytes);

} // namespace orbisk
