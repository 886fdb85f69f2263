// Why a text file was not opened for editing or not saved; nothing was converted or overwritten.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace orbisk {

/// A plain value carrying what its one message needs.
struct TextFileError {
    enum class Kind {
        tooLarge,            ///< size and limit in bytes
        binary,              ///< the bytes are not text
        unsupportedEncoding, ///< neither UTF-8 nor UTF-16 with a byte-order mark
        modifiedOnDisk,      ///< someone else changed the file since it was loaded
        missingOnDisk,       ///< someone else moved or deleted it since it was loaded
        cannotEncode,        ///< the text holds something the encoding cannot represent
        notRegularFile,      ///< a folder, FIFO, device or socket: never opened, so never blocked on
        system,              ///< a system call failed: code, action ("read" or "save") and path
    };

    Kind kind = Kind::binary;
    std::int64_t size = 0;
    std::int64_t limit = 0;
    std::int32_t code = 0;
    std::string action;
    std::filesystem::path path;

    [[nodiscard]] static TextFileError tooLarge(std::int64_t size, std::int64_t limit)
    {
        return {Kind::tooLarge, size, limit, 0, {}, {}};
    }
    [[nodiscard]] static TextFileError of(Kind kind) { return {kind, 0, 0, 0, {}, {}}; }
    [[nodiscard]] static TextFileError notRegularFile(std::filesystem::path path)
    {
        return {Kind::notRegularFile, 0, 0, 0, {}, std::move(path)};
    }
    [[nodiscard]] static TextFileError system(std::int32_t code, std::string action, std::filesystem::path path)
    {
        return {Kind::system, 0, 0, code, std::move(action), std::move(path)};
    }

    /// The localised message; names are the last path component, made safe to show.
    [[nodiscard]] std::string errorDescription() const;

    /// ENOSPC or EDQUOT from a system call: the volume is full.
    [[nodiscard]] bool isVolumeFull() const;

    bool operator==(const TextFileError&) const = default;
};

} // namespace orbisk
