// Copies one file, link or folder shell to a new name, never overwriting and never leaving a partial copy.
#pragma once

#include "platform/CopyError.h"
#include "platform/CopyOptions.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

namespace orbisk::FileCopier {

/// One side of a copy named relative to an open folder, which spares the kernel walking the
/// whole path again for every file of a large tree. `folder` is an open folder or AT_FDCWD;
/// `name` is relative to it (with AT_FDCWD, a path of its own); `path` is the entry's full path,
/// which errors name.
struct EntryAt {
    int folder = AT_FDCWD;
    const char* name = nullptr;
    const std::filesystem::path& path;
};

/// Copies the regular file `from` to the new name `to` with its data (cloned where the file
/// system can, holes kept), owner where allowed, extended attributes and ACLs, mode and times to
/// the nanosecond. Neither side's final component is followed if it is a link (a link source
/// fails with ELOOP at openSource). The copy is written under a hidden temporary name beside `to`
/// (see temporaryName) and only then renamed exclusively to `to`, so `to` either appears
/// complete or not at all: an existing `to` fails with EEXIST and is never touched, and on
/// failure or cancellation the temporary entry is removed. Devices, sockets and fifos fail with
/// CopyError::Kind::unsupportedFileType. Runs on the calling thread; progress is called there.
/// `inspected`, when given, is the lstat of `from` the caller has just taken and acted on: the
/// copier then does not take its own before opening (it still checks what it opened).
[[nodiscard]] std::expected<CopyOutcome, CopyError>
copyFile(const std::filesystem::path& from, const std::filesystem::path& to, const CopyProgress& progress = {},
         const CopyOptions& options = {}, const struct stat* inspected = nullptr);

/// copyFile with both sides named relative to open folders. `copied`, when given, receives the
/// status of the source as it was opened, the file whose data the copy now holds.
[[nodiscard]] std::expected<CopyOutcome, CopyError> copyFileAt(const EntryAt& from, const EntryAt& to,
                                                               const CopyProgress& progress, const CopyOptions& options,
                                                               const struct stat* inspected = nullptr,
                                                               struct stat* copied = nullptr);

/// Copies the symbolic link `from` as a link with the same target (never followed, dangling or
/// not) to the new name `to`, with its owner where allowed and its times; through a temporary
/// name and an exclusive rename like copyFile.
[[nodiscard]] std::expected<void, CopyError> copyLink(const std::filesystem::path& from,
                                                      const std::filesystem::path& to);

/// Creates the folder `to` for a copy, owner-only (0700) until copyFolderMetadata gives it the
/// source's metadata. Fails with EEXIST when the name is taken.
[[nodiscard]] std::expected<void, CopyError> createFolder(const std::filesystem::path& to);

/// Gives the folder `to` the owner, extended attributes (default ACL included), mode and times of
/// the folder `from`, neither of which may be a link. Call it after the folder's contents were
/// copied: copying into it would change its times, and its mode may forbid writing.
[[nodiscard]] std::expected<void, CopyError> copyFolderMetadata(const std::filesystem::path& from,
                                                                const std::filesystem::path& to);

/// The same from an open source folder, so that a folder renamed since it was opened still gives
/// its own metadata. When something fails on the way, the copy still gets the source's mode (an
/// owner-only folder would hide a copy that is otherwise complete) and the first error is returned.
[[nodiscard]] std::expected<void, CopyError> copyFolderMetadata(int from, const std::filesystem::path& to);

/// The hidden name a copy of `name` is written under: ".", the name (cut to keep the whole within
/// 255 bytes), ".ob-copying-" and 8 random hex digits. A crash leaves only such an entry behind.
[[nodiscard]] std::string temporaryName(std::string_view name);

/// Whether `name` has the form temporaryName gives, so leftovers of a crash can be recognised.
[[nodiscard]] bool isTemporaryName(std::string_view name);

} // namespace orbisk::FileCopier
