// Rename masks such as "*.bak" or "a?c.*": new names made from old ones on the way to a folder.
#pragma once

#include <expected>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "operations/FileOperationError.h"

namespace orbisk::RenameMask {

/// Whether text holds "*" or "?" and so is read as a mask.
[[nodiscard]] bool isMask(std::string_view text);

/// One name through the mask. Without a "." in the mask the whole name is expanded; otherwise the
/// mask's stem and extension (split at its last ".") are expanded against the name's (a hidden name
/// such as ".profile" is all stem). In expansion "*" stands for the whole part, "?" for the
/// character at the same position (nothing past the end), anything else for itself. Characters
/// are user-perceived characters; bytes that are not UTF-8 count one each and are kept as they are.
[[nodiscard]] std::string apply(std::string_view mask, std::string_view name);

/// Every name through the mask, in order. Fails with invalidName when a result is not a valid
/// name, or when two results differ only in letter case.
[[nodiscard]] std::expected<std::vector<std::string>, FileOperationError> apply(std::string_view mask,
                                                                                std::span<const std::string> names);

} // namespace orbisk::RenameMask
