#include "operations/FileOperationError.h"

#include <cerrno>
#include <cstring>

#include "support/ByteCount.h"
#include "support/L10n.h"

namespace orbisk {

namespace {

using Path = FileOperationError::Path;

// The name a message shows for a path: its last component, "/" for the root.
std::string lastComponent(const Path& path)
{
    std::string text = path.native();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    const auto slash = text.rfind('/');
    if (slash == std::string::npos || text.size() == 1)
        return text;
    return text.substr(slash + 1);
}

std::string systemMessage(const FileOperationError::System& error)
{
    const auto name = lastComponent(error.path);
    const auto reason = FileOperationError::systemText(error.code);
    const std::string& action = error.action;
    if (action == "rename")
        return L(translate("Orbisk", "Couldn’t rename “%@”: %@."), name, reason);
    if (action == "copy")
        return L(translate("Orbisk", "Couldn’t copy “%@”: %@."), name, reason);
    if (action == "move")
        return L(translate("Orbisk", "Couldn’t move “%@”: %@."), name, reason);
    if (action == "read")
        return L(translate("Orbisk", "Couldn’t read “%@”: %@."), name, reason);
    if (action == "save")
        return L(translate("Orbisk", "Couldn’t save “%@”: %@."), name, reason);
    if (action == "create")
        return L(translate("Orbisk", "Couldn’t create “%@”: %@."), name, reason);
    if (action == "create the file")
        return L(translate("Orbisk", "Couldn’t create the file “%@”: %@."), name, reason);
    if (action == "create the folder")
        return L(translate("Orbisk", "Couldn’t create the folder “%@”: %@."), name, reason);
    if (action == "create the folder for")
        return L(translate("Orbisk", "Couldn’t create the folder for “%@”: %@."), name, reason);
    if (action == "create the archive")
        return L(translate("Orbisk", "Couldn’t create the archive “%@”: %@."), name, reason);
    if (action == "create the link")
        return L(translate("Orbisk", "Couldn’t create the link “%@”: %@."), name, reason);
    if (action == "copy the link")
        return L(translate("Orbisk", "Couldn’t copy the link “%@”: %@."), name, reason);
    if (action == "copy the attributes of")
        return L(translate("Orbisk", "Couldn’t copy the attributes of “%@”: %@."), name, reason);
    if (action == "move the extracted item")
        return L(translate("Orbisk", "Couldn’t move the extracted item “%@”: %@."), name, reason);
    if (action == "write into")
        return L(translate("Orbisk", "Couldn’t write into “%@”: %@."), name, reason);
    return L(translate("Orbisk", "The operation on “%@” couldn’t be completed: %@."), name, reason);
}

std::string mountBoundaryMessage(const FileOperationError::MountBoundary& e)
{
    using Action = FileOperationError::MountAction;
    const auto name = lastComponent(e.item);
    if (e.item == e.mountPoint) {
        switch (e.action) {
        case Action::copy:
            return L(translate("Orbisk", "“%@” is where another volume is mounted; its contents were not copied."),
                     name);
        case Action::move:
            return L(translate("Orbisk", "“%@” is where another volume is mounted, so it can’t be moved. Nothing "
                                         "was changed."),
                     name);
        case Action::trash:
            return L(translate("Orbisk", "“%@” is where another volume is mounted, so it can’t be moved to the "
                                         "Trash. Nothing was changed."),
                     name);
        }
    }
    if (e.action == Action::trash)
        return L(translate("Orbisk", "“%@” holds another volume, mounted at %@, so it can’t be moved to the Trash. "
                                     "Nothing was changed."),
                 name, e.mountPoint.native());
    return L(translate("Orbisk", "“%@” holds another volume, mounted at %@, so it can’t be moved. Nothing was "
                                 "changed."),
             name, e.mountPoint.native());
}

template <class... Cases> struct Overloaded : Cases... {
    using Cases::operator()...;
};

} // namespace

FileOperationError FileOperationError::destinationInsideSource(Path source, Path destination)
{
    return {DestinationInsideSource{std::move(source), std::move(destination)}};
}
FileOperationError FileOperationError::alreadyInDestination(std::string name)
{
    return {AlreadyInDestination{std::move(name)}};
}
FileOperationError FileOperationError::destinationNotFolder(Path path)
{
    return {DestinationNotFolder{std::move(path)}};
}
FileOperationError FileOperationError::itemMissing(Path path)
{
    return {ItemMissing{std::move(path)}};
}
FileOperationError FileOperationError::itemExists(std::string name)
{
    return {ItemExists{std::move(name)}};
}
FileOperationError FileOperationError::invalidName(std::string name, std::string reason)
{
    return {InvalidName{std::move(name), std::move(reason)}};
}
FileOperationError FileOperationError::unsupportedFileType(Path path)
{
    return {UnsupportedFileType{std::move(path)}};
}
FileOperationError FileOperationError::insufficientSpace(std::int64_t needed, std::int64_t available)
{
    return {InsufficientSpace{needed, available}};
}
FileOperationError FileOperationError::sourceNotRemoved(Path path, std::string reason)
{
    return {SourceNotRemoved{std::move(path), std::move(reason)}};
}
FileOperationError FileOperationError::notADirectory(Path path)
{
    return {NotADirectory{std::move(path)}};
}
FileOperationError FileOperationError::cleanupFailed(Path path, std::string reason)
{
    return {CleanupFailed{std::move(path), std::move(reason)}};
}
FileOperationError FileOperationError::cannotReplace(std::string name, std::string reason)
{
    return {CannotReplace{std::move(name), std::move(reason)}};
}
FileOperationError FileOperationError::cannotMerge(std::string name, std::string reason)
{
    return {CannotMerge{std::move(name), std::move(reason)}};
}
FileOperationError FileOperationError::system(std::int32_t code, std::string action, Path path)
{
    return {System{code, std::move(action), std::move(path)}};
}
FileOperationError FileOperationError::renameLeftAtTemporaryName(std::int32_t code, Path path,
                                                                 std::string temporaryName)
{
    return {RenameLeftAtTemporaryName{code, std::move(path), std::move(temporaryName)}};
}
FileOperationError FileOperationError::changedSinceComparison(Path path)
{
    return {ChangedSinceComparison{std::move(path)}};
}

FileOperationError FileOperationError::mountBoundary(Path item, Path mountPoint, MountAction action)
{
    return {MountBoundary{std::move(item), std::move(mountPoint), action}};
}

std::string FileOperationError::errorDescription() const
{
    // Cases whose reason is inserted last end without a full stop of their own: the reason has one.
    return std::visit(
        Overloaded{
            [](const DestinationInsideSource& e) {
                return L(
                    translate("Orbisk", "“%@” can’t be copied or moved into itself or one of its own subfolders (%@)."),
                    lastComponent(e.source), e.destination.native());
            },
            [](const AlreadyInDestination& e) {
                return L(translate("Orbisk", "“%@” is already in the destination folder."), e.name);
            },
            [](const DestinationNotFolder& e) {
                return L(translate("Orbisk", "The destination “%@” is not an existing folder."), e.path.native());
            },
            [](const ItemMissing& e) {
                return L(translate("Orbisk",
                                   "“%@” no longer exists. It may have been moved or deleted by another application."),
                         lastComponent(e.path));
            },
            [](const ItemExists& e) { return L(translate("Orbisk", "An item named “%@” already exists."), e.name); },
            [](const InvalidName& e) {
                return L(translate("Orbisk", "“%@” can’t be used as a name: %@"), e.name, e.reason);
            },
            [](const UnsupportedFileType& e) {
                return L(translate("Orbisk", "“%@” is a special file (device, socket or pipe) and was not copied."),
                         lastComponent(e.path));
            },
            [](const InsufficientSpace& e) {
                return L(
                    translate("Orbisk", "Not enough free space on the destination volume: %@ needed, %@ available."),
                    formatByteCount(e.needed), formatByteCount(e.available));
            },
            [](const SourceNotRemoved& e) {
                return L(translate("Orbisk", "“%@” was copied, but the original could not be removed: %@"),
                         lastComponent(e.path), e.reason);
            },
            [](const NotADirectory& e) { return L(translate("Orbisk", "“%@” is not a folder."), e.path.native()); },
            [](const CleanupFailed& e) {
                return L(translate("Orbisk", "The incomplete copy “%@” could not be removed: %@"),
                         lastComponent(e.path), e.reason);
            },
            [](const CannotReplace& e) {
                return L(translate("Orbisk", "“%@” was not replaced: %@"), e.name, e.reason);
            },
            [](const CannotMerge& e) { return L(translate("Orbisk", "“%@” was not merged: %@"), e.name, e.reason); },
            [](const System& e) { return systemMessage(e); },
            [](const RenameLeftAtTemporaryName& e) {
                return L(translate("Orbisk", "Couldn’t rename (the item is now named %@) “%@”: %@."), e.temporaryName,
                         lastComponent(e.path), systemText(e.code));
            },
            [](const ChangedSinceComparison& e) {
                return L(translate("Orbisk", "“%@” changed after the folders were compared, so it was left alone. "
                                             "Compare again to include it."),
                         lastComponent(e.path));
            },
            [](const MountBoundary& e) { return mountBoundaryMessage(e); },
        },
        value);
}

std::optional<std::int32_t> FileOperationError::posixCode() const
{
    if (const auto* e = std::get_if<System>(&value))
        return e->code;
    if (const auto* e = std::get_if<RenameLeftAtTemporaryName>(&value))
        return e->code;
    return std::nullopt;
}

bool FileOperationError::isPermissionDenied() const
{
    const auto code = posixCode();
    return code && (*code == EACCES || *code == EPERM);
}

std::string FileOperationError::systemText(int code)
{
    char buffer[256];
    // The GNU strerror_r: thread-safe, returns either buffer or a static text.
    return ::strerror_r(code, buffer, sizeof buffer);
}

} // namespace orbisk
