// What went wrong while copying one entry: the step, the system error and the path concerned.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace orbisk {

/// The step of a copy that failed.
enum class CopyStep : std::uint8_t {
    inspectSource,     ///< reading the source's status
    openSource,        ///< opening the source for reading
    readSource,        ///< reading data or extended attributes from the source
    createDestination, ///< creating the temporary entry, or the final name was already taken
    writeDestination,  ///< writing data into the destination
    setAttributes,     ///< permissions, owner or extended attributes (ACLs included)
    setTimes,          ///< access and modification times
    readLink,          ///< reading a symbolic link's target
    createLink,        ///< creating the new symbolic link
    createFolder,      ///< creating a destination folder
    rename,            ///< giving the finished copy its final name
};

/// A failed copy. `code` is the errno of the failing call, except for an unsupported file type
/// (a device, socket or fifo), which is not a system error and carries code 0.
struct CopyError {
    enum class Kind : std::uint8_t { system, unsupportedFileType };

    Kind kind = Kind::system;
    CopyStep step = CopyStep::inspectSource;
    int code = 0;
    std::filesystem::path path; ///< the source or destination the step was working on

    [[nodiscard]] static CopyError system(CopyStep step, int code, std::filesystem::path path)
    {
        return {Kind::system, step, code, std::move(path)};
    }
    [[nodiscard]] static CopyError unsupportedFileType(std::filesystem::path path)
    {
        return {Kind::unsupportedFileType, CopyStep::inspectSource, 0, std::move(path)};
    }

    /// Whether the destination volume ran out of space or quota: no later copy can succeed
    /// there either, so a run of copies stops as a whole.
    [[nodiscard]] bool isVolumeFull() const;

    friend bool operator==(const CopyError&, const CopyError&) = default;
};

/// A short English name of a step, for logs and test output (not for the user interface).
[[nodiscard]] std::string_view stepName(CopyStep step);

} // namespace orbisk
