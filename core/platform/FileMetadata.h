// Copies an entry's metadata (owner, extended attributes and ACLs, mode, times) onto its copy.
#pragma once

#include "platform/CopyError.h"

#include <sys/stat.h>

#include <expected>
#include <filesystem>

namespace orbisk::FileMetadata {

/// Gives the open `destination` the metadata of the open `source` whose fstat is `status`, all
/// through the descriptors: the owner and group where the system allows it (EPERM is not an
/// error: the copy then belongs to the copying user), every extended attribute including ACLs
/// (skipped where the destination does not support them, and privileged namespaces skipped when
/// not allowed), the permission bits (setuid and setgid only when owner and group were kept),
/// and last the access and modification times to the nanosecond. `path` names the destination
/// in errors.
[[nodiscard]] std::expected<void, CopyError> copy(int source, const struct stat& status, int destination,
                                                  const std::filesystem::path& path);

/// Gives the symbolic link `name` in folder `folder` (a descriptor or AT_FDCWD) the owner and
/// times in `status`, without following it. A link has no permissions of its own, and Linux
/// keeps user extended attributes off links, so there is nothing else to copy.
[[nodiscard]] std::expected<void, CopyError>
copyToLink(const struct stat& status, int folder, const std::filesystem::path& name, const std::filesystem::path& path);

} // namespace orbisk::FileMetadata
