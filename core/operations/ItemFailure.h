// One item that an operation could not process, and why.
#pragma once

#include <filesystem>
#include <string>

#include "operations/AnyError.h"

namespace orbisk {

struct ItemFailure {
    std::filesystem::path url; ///< the item that failed
    AnyError error;

    /// The error's own localised message.
    [[nodiscard]] std::string message() const { return error.description(); }
};

} // namespace orbisk
