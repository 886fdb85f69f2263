// Random UUIDs for the hidden staging names of renames and undo.
#pragma once

#include <string>

namespace orbisk::Uuid {

/// A new random (version 4) UUID in lower case, as "1b4e28ba-2fa1-41d2-883f-0016d3cca427".
/// Thread-safe; draws from the kernel's random source.
[[nodiscard]] std::string random();

} // namespace orbisk::Uuid
