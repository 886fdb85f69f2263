#include "operations/ItemActions.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "operations/NameGenerator.h"
#include "platform/ExclusiveRename.h"
#include "support/Paths.h"
#include "support/Translate.h"
#include "support/UnicodeText.h"
#include "support/Uuid.h"

namespace orbisk::ItemActions {

namespace fs = std::filesystem;

std::expected<void, FileOperationError> validateName(std::string_view name)
{
    const auto invalid = [&](std::string reason) {
        return std::unexpected(FileOperationError::invalidName(std::string(name), std::move(reason)));
    };
    if (name.find_first_not_of(" \t") == std::string_view::npos)
        return invalid(translate("Orbisk", "a name can’t be empty."));
    if (name == "." || name == "..")
        return invalid(translate("Orbisk", "“.” and “..” are reserved."));
    if (name.find('/') != std::string_view::npos)
        return invalid(translate("Orbisk", "a name can’t contain “/”."));
    if (name.find('\0') != std::string_view::npos)
        return invalid(translate("Orbisk", "a name can’t contain a NUL character."));
    if (name.size() > 255)
        return invalid(translate("Orbisk", "the name is longer than 255 bytes."));
    return {};
}

std::expected<void, FileOperationError> validateItem(const fs::path& item)
{
    if (!Paths::endsInDotOrDotDot(item))
        return {};
    return std::unexpected(FileOperationError::invalidName(
        Paths::itemPath(item).filename().native(), translate("Orbisk", "“.” and “..” stand for folders by their place; "
                                                                       "name the folder itself.")));
}

namespace {

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return UnicodeText::lowercased(UnicodeText::decode(a)) == UnicodeText::lowercased(UnicodeText::decode(b));
}

/// The name the folder really holds for the object after a change of case: a volume that folds
/// case may store its own spelling. Falls back to the asked-for name.
std::string storedName(const fs::path& folder, std::string_view wanted, const struct stat& identity)
{
    struct Closer {
        void operator()(DIR* d) const { ::closedir(d); }
    };
    std::unique_ptr<DIR, Closer> dir(::opendir(folder.c_str()));
    if (!dir)
        return std::string(wanted);
    while (const dirent* entry = ::readdir(dir.get())) {
        if (entry->d_ino == identity.st_ino && equalIgnoringCase(entry->d_name, wanted))
            return entry->d_name;
    }
    return std::string(wanted);
}

/// A change of letter case: on a volume that folds case the old and the new name are one entry,
/// and rename(2) between them does nothing, so the item goes through a hidden name first. Where
/// the two names are really two links to one file, the second step finds the name taken and the
/// item returns to its old name.
std::expected<fs::path, FileOperationError> renameChangingCase(const fs::path& item, std::string_view newName,
                                                               const struct stat& identity)
{
    const auto folder = item.parent_path();
    const auto temporaryName = ".orbisk-rename-" + Uuid::random();
    const auto temporary = folder / temporaryName;
    if (auto moved = ExclusiveRename::rename(item, temporary); !moved)
        return std::unexpected(FileOperationError::system(moved.error(), "rename", item));
    const auto target = folder / newName;
    if (auto renamed = ExclusiveRename::rename(temporary, target); !renamed) {
        if (auto back = ExclusiveRename::rename(temporary, item); !back)
            return std::unexpected(FileOperationError::renameLeftAtTemporaryName(renamed.error(), item, temporaryName));
        if (renamed.error() == EEXIST)
            return std::unexpected(FileOperationError::itemExists(std::string(newName)));
        return std::unexpected(FileOperationError::system(renamed.error(), "rename", item));
    }
    return folder / storedName(folder, newName, identity);
}

} // namespace

std::expected<fs::path, FileOperationError> rename(const fs::path& given, std::string_view newName)
{
    if (auto valid = validateItem(given); !valid)
        return std::unexpected(valid.error());
    if (auto valid = validateName(newName); !valid)
        return std::unexpected(valid.error());
    const auto item = Paths::itemPath(given);
    const auto currentName = item.filename().native();
    if (newName == currentName)
        return item;
    const auto target = item.parent_path() / newName;

    struct stat existing {};
    if (::lstat(target.c_str(), &existing) != 0) {
        if (auto renamed = ExclusiveRename::rename(item, target); !renamed) {
            if (renamed.error() == EEXIST)
                return std::unexpected(FileOperationError::itemExists(std::string(newName)));
            return std::unexpected(FileOperationError::system(renamed.error(), "rename", item));
        }
        return target;
    }
    struct stat source {};
    if (::lstat(item.c_str(), &source) != 0)
        return std::unexpected(FileOperationError::system(errno, "rename", item));
    if (source.st_dev == existing.st_dev && source.st_ino == existing.st_ino && equalIgnoringCase(currentName, newName))
        return renameChangingCase(item, newName, source);
    return std::unexpected(FileOperationError::itemExists(std::string(newName)));
}

std::expected<fs::path, FileOperationError> createDirectory(std::string_view name, const fs::path& folder)
{
    if (auto valid = validateName(name); !valid)
        return std::unexpected(valid.error());
    const auto path = folder / name;
    if (::mkdir(path.c_str(), 0755) != 0)
        return std::unexpected(FileOperationError::system(errno, "create the folder", path));
    return path;
}

std::expected<fs::path, FileOperationError> createEmptyFile(std::string_view name, const fs::path& folder)
{
    if (auto valid = validateName(name); !valid)
        return std::unexpected(valid.error());
    const auto path = folder / name;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) {
        if (errno == EEXIST)
            return std::unexpected(FileOperationError::itemExists(std::string(name)));
        return std::unexpected(FileOperationError::system(errno, "create the file", path));
    }
    ::close(fd);
    return path;
}

std::string duplicateName(const fs::path& item)
{
    struct stat st {};
    const bool isRealFolder = ::lstat(item.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    return NameGenerator::duplicateName(item.filename().native(), isRealFolder,
                                        NameGenerator::existsChecker(item.parent_path()));
}

} // namespace orbisk::ItemActions
