#include "support/Uuid.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>

namespace orbisk::Uuid {

std::string random()
{
    std::array<std::uint8_t, 16> bytes{};
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const auto got = ::getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    if (filled < bytes.size()) {
        // Only without getrandom (very old kernels); uniqueness, not secrecy, is what counts here.
        std::random_device device;
        for (auto& byte : bytes)
            byte = static_cast<std::uint8_t>(device());
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);

    constexpr char hex[] = "0123456789abcdef";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += hex[bytes[i] >> 4];
        text += hex[bytes[i] & 0x0F];
    }
    return text;
}

} // namespace orbisk::Uuid
