// Replacing safely: the new item is made under a hidden name first, only then does the old one go.
#include <sys/stat.h>

#include <cerrno>

#include "operations/ItemStamp.h"
#include "operations/NameGenerator.h"
#include "operations/TransferEngine.h"
#include "platform/ExclusiveRename.h"
#include "platform/Trash.h"
#include "support/L10n.h"
#include "support/Translate.h"
#include "support/Uuid.h"

namespace orbisk {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maxKeptNameBytes = 200;
constexpr int replacingNameAttempts = 16;

// ".<name>.ob-replacing-" and 8 characters of a fresh UUID; the name is cut from its end to at
// most 200 bytes, never inside a UTF-8 sequence.
std::string replacingName(const std::string& name)
{
    std::size_t keep = std::min(name.size(), maxKeptNameBytes);
    while (keep > 0 && keep < name.size() && (static_cast<unsigned char>(name[keep]) & 0xC0) == 0x80)
        --keep;
    return "." + name.substr(0, keep) + ".ob-replacing-" + Uuid::random().substr(0, 8);
}

std::expected<std::optional<fs::path>, int> trashItem(const fs::path& item)
{
    auto where = Trash::forCurrentUser().moveToTrash(item);
    if (!where)
        return std::unexpected(where.error());
    return std::optional<fs::path>(std::move(*where));
}

bool isTaken(const fs::path& path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

} // namespace

// Picks a replacing name that is free now. That is only a choice of name: the copy or rename
// into it is exclusive, so a name taken in between makes the item fail, never overwrites.
std::optional<fs::path> TransferEngine::freeReplacingName(const fs::path& folder, const std::string& name) const
{
    for (int attempt = 0; attempt < replacingNameAttempts; ++attempt) {
        fs::path candidate = folder / replacingName(name);
        if (!isTaken(candidate))
            return candidate;
    }
    return std::nullopt;
}

bool TransferEngine::finishReplacement(const Replacement& replacement, const fs::path& temporary,
                                       const fs::path& source, bool renamedSource)
{
    const fs::path& existing = replacement.existing;
    const std::string name = existing.filename().native();
    const fs::path folder = existing.parent_path();

    std::optional<fs::path> asideAt;
    if (replacement.renamingExisting) {
        struct stat status {};
        const bool isFolder = ::lstat(existing.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
        fs::path aside = folder / NameGenerator::oldName(name, isFolder, NameGenerator::existsChecker(folder));
        if (auto renamed = ExclusiveRename::rename(existing, aside); !renamed) {
            fail(source, FileOperationError::cannotReplace(
                             name, L(translate("Orbisk", "it couldn’t be renamed (%@). It was left unchanged."),
                                     FileOperationError::systemText(renamed.error()))));
            giveBackTemporary(temporary, source, renamedSource);
            return false;
        }
        report_.undoChanges.push_back(UndoChange::moved(existing, aside, ItemStamp::of(aside)));
        asideAt = std::move(aside);
    } else {
        const auto disposed = replacedItemDisposer ? replacedItemDisposer(existing) : trashItem(existing);
        if (!disposed) {
            fail(source,
                 FileOperationError::cannotReplace(
                     name, L(translate("Orbisk", "it couldn’t be moved to the Trash (%@). It was left unchanged."),
                             FileOperationError::systemText(disposed.error()))));
            giveBackTemporary(temporary, source, renamedSource);
            return false;
        }
        if (*disposed)
            report_.undoChanges.push_back(UndoChange::trashed(existing, **disposed, ItemStamp::of(**disposed)));
    }

    auto named = ExclusiveRename::rename(temporary, existing);
    if (named)
        return true;
    const std::string why = FileOperationError::systemText(named.error());
    if (!asideAt) {
        // The old item is in the Trash; the new one stays under its hidden name, which the
        // message points to, rather than being thrown away as well.
        fail(source, FileOperationError::cannotReplace(
                         name, L(translate("Orbisk", "the old item is in the Trash, but the new one couldn’t take "
                                                     "its name (%@). It is in the same folder as “%@”."),
                                 why, name)));
        return false;
    }
    if (ExclusiveRename::rename(*asideAt, existing)) {
        report_.undoChanges.pop_back();
        fail(source, FileOperationError::cannotReplace(
                         name, L(translate("Orbisk", "the new item couldn’t take its name (%@). The existing item "
                                                     "was left unchanged."),
                                 why)));
    } else {
        fail(source, FileOperationError::cannotReplace(
                         name, L(translate("Orbisk", "the new item couldn’t take its name (%@). The existing item is "
                                                     "now named “%@”."),
                                 why, asideAt->filename().native())));
    }
    giveBackTemporary(temporary, source, renamedSource);
    return false;
}

// Undoes the first step of a replacement that did not finish: a copy is removed, a source that
// was renamed to the hidden name goes back to where it was.
void TransferEngine::giveBackTemporary(const fs::path& temporary, const fs::path& source, bool renamedSource)
{
    if (!renamedSource) {
        removePartial(temporary);
        return;
    }
    if (!ExclusiveRename::rename(temporary, source))
        fail(temporary, FileOperationError::cleanupFailed(
                            temporary, translate("Orbisk", "the item was left under this temporary name.")));
}

} // namespace orbisk
