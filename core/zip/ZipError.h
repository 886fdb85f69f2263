// Why an archive or one of its members could not be written or read.
#pragma once

#include <cstdint>
#include <string>

namespace orbisk {

/// A plain value: the case and the member name (or a word naming the failing stage) that its one
/// message shows. Compared by case and payload.
struct ZipError {
    enum class Kind {
        encrypted,         ///< the member is encrypted
        unsupportedMethod, ///< a compression method other than stored (0) and deflated (8)
        corrupt,           ///< the member's data or headers are damaged ("stream", "data" for the codec)
        checksumMismatch,  ///< the data inflated but its CRC-32 differs
        unsafePath,        ///< absolute, "..", or otherwise a name that could leave the folder
        unsafeLink,        ///< a symbolic link that would point outside the extracted folder
        tooLarge,          ///< 4 GB or larger: needs ZIP64
        notAZip,           ///< no usable end record or central directory
        zip64Unsupported,  ///< the archive needs ZIP64
        dateOutOfRange,    ///< a modification date after 2107, which the DOS date field cannot hold
    };

    Kind kind = Kind::notAZip;
    std::string name;         ///< the member's name as bytes, or the stage word; empty for archive-wide cases
    std::uint16_t method = 0; ///< the method number of unsupportedMethod

    [[nodiscard]] static ZipError encrypted(std::string name) { return {Kind::encrypted, std::move(name)}; }
    [[nodiscard]] static ZipError unsupportedMethod(std::string name, std::uint16_t method)
    {
        return {Kind::unsupportedMethod, std::move(name), method};
    }
    [[nodiscard]] static ZipError corrupt(std::string name) { return {Kind::corrupt, std::move(name)}; }
    [[nodiscard]] static ZipError checksumMismatch(std::string name)
    {
        return {Kind::checksumMismatch, std::move(name)};
    }
    [[nodiscard]] static ZipError unsafePath(std::string name) { return {Kind::unsafePath, std::move(name)}; }
    [[nodiscard]] static ZipError unsafeLink(std::string name) { return {Kind::unsafeLink, std::move(name)}; }
    [[nodiscard]] static ZipError tooLarge(std::string name) { return {Kind::tooLarge, std::move(name)}; }
    [[nodiscard]] static ZipError notAZip() { return {Kind::notAZip, {}}; }
    [[nodiscard]] static ZipError zip64Unsupported() { return {Kind::zip64Unsupported, {}}; }
    [[nodiscard]] static ZipError dateOutOfRange(std::string name) { return {Kind::dateOutOfRange, std::move(name)}; }

    /// The localised message; names are made visible and isolated for display.
    [[nodiscard]] std::string errorDescription() const;

    bool operator==(const ZipError&) const = default;
};

} // namespace orbisk
