// The CRC-32 of ZIP members (IEEE 802.3, reflected polynomial 0xEDB88320).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace orbisk {

/// A running checksum: start from a fresh value, feed bytes in any number of pieces, read value().
/// zlib does the arithmetic (its folded, table-driven code is several times faster than a plain
/// byte-wise table, which matters when every archived and extracted byte passes through it).
class CRC32 {
public:
    /// Adds bytes to the running checksum.
    void update(std::span<const std::byte> bytes);
    void update(std::string_view bytes) { update(std::as_bytes(std::span(bytes.data(), bytes.size()))); }

    /// The checksum of everything fed so far (0 for nothing).
    [[nodiscard]] std::uint32_t value() const { return value_; }

    /// The checksum of one buffer.
    [[nodiscard]] static std::uint32_t of(std::string_view bytes)
    {
        CRC32 crc;
        crc.update(bytes);
        return crc.value();
    }

private:
    std::uint32_t value_ = 0;
};

} // namespace orbisk
