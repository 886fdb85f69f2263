#include "operations/TransferTarget.h"

#include "operations/ItemActions.h"
#include "operations/RenameMask.h"
#include "support/L10n.h"
#include "support/Paths.h"

namespace orbisk::TransferTargetResolver {

namespace fs = std::filesystem;

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view space = " \t\n\r\v\f";
    const auto first = text.find_first_not_of(space);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

/// "~" and "~/…" are read against the given home rather than the process's own.
fs::path expanded(std::string_view typed, const fs::path& base, const fs::path& home)
{
    if (typed == "~")
        return Paths::expandTypedPath(home.native(), base);
    if (typed.starts_with("~/"))
        return Paths::expandTypedPath((home / typed.substr(2)).native(), base);
    return Paths::expandTypedPath(typed, base);
}

std::expected<TransferTarget, FileOperationError> resolveLocation(const fs::path& location, bool namesFolder,
                                                                  std::size_t sourceCount)
{
    if (Paths::isExistingFolder(location))
        return TransferTarget::into(location);

    const auto name = location.filename().native();
    const auto parent = Paths::parentFolder(location);
    // A last "." or ".." that is still there belongs to a folder the kernel could not find.
    namesFolder = namesFolder || Paths::endsInDotOrDotDot(location);
    if (!namesFolder && RenameMask::isMask(name)) {
        if (!Paths::isExistingFolder(parent))
            return std::unexpected(FileOperationError::destinationNotFolder(parent));
        return TransferTarget::masked(parent, name);
    }
    if (!namesFolder && sourceCount < 2) {
        if (!Paths::isExistingFolder(parent))
            return std::unexpected(FileOperationError::destinationNotFolder(parent));
        if (auto valid = ItemActions::validateName(name); !valid)
            return std::unexpected(valid.error());
        return TransferTarget::renamed(parent, name);
    }
    return std::unexpected(FileOperationError::destinationNotFolder(location));
}

} // namespace

std::expected<TransferTarget, FileOperationError> resolve(std::string_view text, const fs::path& base,
                                                          std::size_t sourceCount, const fs::path& home)
{
    // Blanks around the text are names like any other (a pane's folder may end in one); they only
    // stand aside when asking whether the text ends in "/".
    const auto blanksAside = trimmed(text);
    if (blanksAside.empty())
        return std::unexpected(
            FileOperationError::invalidName(std::string(text), translate("Orbisk", "enter a destination.")));
    return resolveLocation(expanded(text, base, home), blanksAside.ends_with('/'), sourceCount);
}

std::expected<TransferTarget, FileOperationError> resolvePath(std::string_view path, const fs::path& base,
                                                              std::size_t sourceCount)
{
    if (path.empty())
        return std::unexpected(
            FileOperationError::invalidName(std::string(path), translate("Orbisk", "enter a destination.")));
    const fs::path given(path);
    return resolveLocation(Paths::folderPath(given.is_absolute() ? given : base / given), path.ends_with('/'),
                           sourceCount);
}

} // namespace orbisk::TransferTargetResolver
