// What a typed copy or move destination means: a folder, a new name, or a rename mask.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "operations/FileOperationError.h"

namespace orbisk {

struct TransferTarget {
    /// An existing folder; every item keeps its own name.
    struct Into {
        std::filesystem::path folder;
        bool operator==(const Into&) const = default;
    };
    /// The one item goes into folder under name.
    struct Renamed {
        std::filesystem::path folder;
        std::string name;
        bool operator==(const Renamed&) const = default;
    };
    /// Every item goes into folder, renamed by the mask (see RenameMask).
    struct Masked {
        std::filesystem::path folder;
        std::string mask;
        bool operator==(const Masked&) const = default;
    };

    std::variant<Into, Renamed, Masked> value;

    static TransferTarget into(std::filesystem::path folder) { return {Into{std::move(folder)}}; }
    static TransferTarget renamed(std::filesystem::path folder, std::string name)
    {
        return {Renamed{std::move(folder), std::move(name)}};
    }
    static TransferTarget masked(std::filesystem::path folder, std::string mask)
    {
        return {Masked{std::move(folder), std::move(mask)}};
    }
    bool operator==(const TransferTarget&) const = default;
};

namespace TransferTargetResolver {

/// Reads the destination the user typed. "~" is home; a relative path is read against base; ".."
/// is read as the kernel reads it. The text is a location as it stands: blanks around it belong to
/// the names, and only a "/" at its end (blanks aside) says that a folder is meant. An existing
/// folder gives Into (even when its name holds "*"); a last component holding "*" or "?" gives
/// Masked in its parent; a plain new name for fewer than two items gives Renamed in its parent.
/// Fails with invalidName for blank text or a bad name, and with destinationNotFolder when the
/// parent is not a folder, or the text ends in "/", "." or "..", or a new name is typed for several
/// items. Only status queries touch the disk; no folder is ever created.
[[nodiscard]] std::expected<TransferTarget, FileOperationError> resolve(std::string_view text,
                                                                        const std::filesystem::path& base,
                                                                        std::size_t sourceCount,
                                                                        const std::filesystem::path& home);

/// Reads a destination given as an exact path, such as a command-line argument: as resolve, but
/// without "~" (a name like any other) and with only empty text refused.
[[nodiscard]] std::expected<TransferTarget, FileOperationError>
resolvePath(std::string_view path, const std::filesystem::path& base, std::size_t sourceCount);

} // namespace TransferTargetResolver

} // namespace orbisk
