// The error of file operations: seventeen cases, each carrying what its one message needs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace orbisk {

/// Make one with the factory named after its case, e.g. FileOperationError::system(errno, "copy", path).
/// Paths are kept as bytes; messages show the last component unless a case says "in full".
struct FileOperationError {
    using Path = std::filesystem::path;

    struct DestinationInsideSource {
        Path source, destination;
        bool operator==(const DestinationInsideSource&) const = default;
    };
    struct AlreadyInDestination {
        std::string name;
        bool operator==(const AlreadyInDestination&) const = default;
    };
    struct DestinationNotFolder {
        Path path;
        bool operator==(const DestinationNotFolder&) const = default;
    };
    struct ItemMissing {
        Path path;
        bool operator==(const ItemMissing&) const = default;
    };
    struct ItemExists {
        std::string name;
        bool operator==(const ItemExists&) const = default;
    };
    struct InvalidName {
        std::string name, reason;
        bool operator==(const InvalidName&) const = default;
    };
    struct UnsupportedFileType {
        Path path;
        bool operator==(const UnsupportedFileType&) const = default;
    };
    struct InsufficientSpace {
        std::int64_t needed = 0, available = 0;
        bool operator==(const InsufficientSpace&) const = default;
    };
    struct SourceNotRemoved {
        Path path;
        std::string reason;
        bool operator==(const SourceNotRemoved&) const = default;
    };
    struct NotADirectory {
        Path path;
        bool operator==(const NotADirectory&) const = default;
    };
    struct CleanupFailed {
        Path path;
        std::string reason;
        bool operator==(const CleanupFailed&) const = default;
    };
    struct CannotReplace {
        std::string name, reason;
        bool operator==(const CannotReplace&) const = default;
    };
    struct CannotMerge {
        std::string name, reason;
        bool operator==(const CannotMerge&) const = default;
    };
    struct System {
        std::int32_t code = 0;
        std::string action;
        Path path;
        bool operator==(const System&) const = default;
    };
    struct RenameLeftAtTemporaryName {
        std::int32_t code = 0;
        Path path;
        std::string temporaryName;
        bool operator==(const RenameLeftAtTemporaryName&) const = default;
    };
    struct ChangedSinceComparison {
        Path path;
        bool operator==(const ChangedSinceComparison&) const = default;
    };
    /// What was asked of an item that is, or holds, the mount point of another volume.
    enum class MountAction : std::uint8_t { copy, move, trash };
    struct MountBoundary {
        Path item;       ///< the item the user chose
        Path mountPoint; ///< the item itself, or the mount point found inside it
        MountAction action = MountAction::move;
        bool operator==(const MountBoundary&) const = default;
    };

    /// The cases in their order of declaration; kind() gives the one held.
    enum class Kind {
        destinationInsideSource,
        alreadyInDestination,
        destinationNotFolder,
        itemMissing,
        itemExists,
        invalidName,
        unsupportedFileType,
        insufficientSpace,
        sourceNotRemoved,
        notADirectory,
        cleanupFailed,
        cannotReplace,
        cannotMerge,
        system,
        renameLeftAtTemporaryName,
        changedSinceComparison,
        mountBoundary,
    };

    std::variant<DestinationInsideSource, AlreadyInDestination, DestinationNotFolder, ItemMissing, ItemExists,
                 InvalidName, UnsupportedFileType, InsufficientSpace, SourceNotRemoved, NotADirectory, CleanupFailed,
                 CannotReplace, CannotMerge, System, RenameLeftAtTemporaryName, ChangedSinceComparison, MountBoundary>
        value;

    static FileOperationError destinationInsideSource(Path source, Path destination);
    static FileOperationError alreadyInDestination(std::string name);
    static FileOperationError destinationNotFolder(Path path);
    static FileOperationError itemMissing(Path path);
    static FileOperationError itemExists(std::string name);
    /// reason is one of the name-validation texts, with its own full stop.
    static FileOperationError invalidName(std::string name, std::string reason);
    static FileOperationError unsupportedFileType(Path path);
    static FileOperationError insufficientSpace(std::int64_t needed, std::int64_t available);
    static FileOperationError sourceNotRemoved(Path path, std::string reason);
    static FileOperationError notADirectory(Path path);
    static FileOperationError cleanupFailed(Path path, std::string reason);
    static FileOperationError cannotReplace(std::string name, std::string reason);
    static FileOperationError cannotMerge(std::string name, std::string reason);
    /// action is one of the verbs of the message table ("rename", "copy", "create the folder", …).
    static FileOperationError system(std::int32_t code, std::string action, Path path);
    static FileOperationError renameLeftAtTemporaryName(std::int32_t code, Path path, std::string temporaryName);
    static FileOperationError changedSinceComparison(Path path);
    /// A move or trash refused because item is or holds mountPoint, or the mounted part of a copy
    /// that was left out.
    static FileOperationError mountBoundary(Path item, Path mountPoint, MountAction action);

    [[nodiscard]] Kind kind() const { return static_cast<Kind>(value.index()); }

    /// The localised message shown to the user.
    [[nodiscard]] std::string errorDescription() const;

    /// The system error number of `system` and `renameLeftAtTemporaryName`; absent otherwise.
    [[nodiscard]] std::optional<std::int32_t> posixCode() const;

    /// EACCES or EPERM in a case that carries a system error number.
    [[nodiscard]] bool isPermissionDenied() const;

    /// The system's text for an error number ("Permission denied"), as the messages show it.
    [[nodiscard]] static std::string systemText(int code);

    bool operator==(const FileOperationError&) const = default;
};

} // namespace orbisk
