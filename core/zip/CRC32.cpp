#include "zip/CRC32.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace orbisk {

void CRC32::update(std::span<const std::byte> bytes)
{
    // crc32() keeps the pre- and post-inversion of the standard inside: its running value is the
    // finished checksum of what it has seen, so it can be handed back in for the next piece.
    const auto* data = reinterpret_cast<const Bytef*>(bytes.data());
    std::size_t left = bytes.size();
    while (left > 0) {
        const auto piece = static_cast<uInt>(std::min<std::size_t>(left, std::numeric_limits<uInt>::max()));
        value_ = static_cast<std::uint32_t>(::crc32(value_, data, piece));
        data += piece;
        left -= piece;
    }
}

} // namespace orbisk
