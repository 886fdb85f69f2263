// Little-endian fields of ZIP headers, appended to a byte buffer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orbisk {

/// Appends to the buffer it was given; the ZIP application note stores every field little-endian.
class ByteWriter {
public:
    explicit ByteWriter(std::string& buffer) : buffer_(buffer) {}

    void u16(std::uint16_t value)
    {
        buffer_.push_back(static_cast<char>(value & 0xFF));
        buffer_.push_back(static_cast<char>(value >> 8));
    }
    void u32(std::uint32_t value)
    {
        u16(static_cast<std::uint16_t>(value & 0xFFFF));
        u16(static_cast<std::uint16_t>(value >> 16));
    }
    void bytes(std::string_view data) { buffer_.append(data); }

private:
    std::string& buffer_;
};

/// The 16- and 32-bit little-endian field at offset of data; the caller has checked the length.
[[nodiscard]] inline std::uint16_t le16(std::string_view data, std::size_t offset)
{
    return static_cast<std::uint16_t>(static_cast<unsigned char>(data[offset]) |
                                      static_cast<unsigned char>(data[offset + 1]) << 8);
}
[[nodiscard]] inline std::uint32_t le32(std::string_view data, std::size_t offset)
{
    return le16(data, offset) | static_cast<std::uint32_t>(le16(data, offset + 2)) << 16;
}

} // namespace orbisk
