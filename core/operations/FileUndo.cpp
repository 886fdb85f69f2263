#include "operations/FileUndo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <set>

#include "operations/CrossVolumeMove.h"
#include "operations/FileOperationError.h"
#include "operations/FileUndoError.h"
#include "operations/ItemStamp.h"
#include "platform/ExclusiveRename.h"
#include "platform/Trash.h"
#include "support/Paths.h"
#include "support/Uuid.h"

namespace orbisk::FileUndo {

namespace fs = std::filesystem;

namespace {

bool isTaken(const fs::path& path)
{
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

std::string nameOf(const fs::path& path)
{
    return path.filename().native();
}

/// The work of one revert: the problems found and the inverse built, in the order things happen.
class Reverter {
public:
    Reverter(const UndoRecord& record, const TrashService& trash) : record_(record), trash_(trash)
    {
        outcome_.inverse.name = record.name;
        outcome_.remaining.name = record.name;
    }

    UndoOutcome run()
    {
        if (formsChain())
            stageMovedItems();
        std::vector<UndoChange> remaining;
        for (auto index = record_.changes.size(); index-- > 0;) {
            // A change that added nothing to the inverse was not reversed and stays to be undone.
            const auto before = outcome_.inverse.changes.size();
            std::visit([&](const auto& change) { revert(index, change); }, record_.changes[index].change);
            if (outcome_.inverse.changes.size() == before)
                remaining.push_back(record_.changes[index]);
        }
        outcome_.remaining.changes.assign(remaining.rbegin(), remaining.rend());
        // Folders made again stay writable for their owner until their items are back in them.
        for (const auto& [folder, mode] : modes_)
            ::chmod(folder.c_str(), mode);
        return std::move(outcome_);
    }

private:
    /// Whether one move's new place is another move's old place: then moving the items back one by
    /// one could find places still held by each other.
    bool formsChain() const
    {
        std::set<fs::path> oldPlaces;
        for (const auto& change : record_.changes) {
            if (const auto* moved = std::get_if<UndoChange::Moved>(&change.change))
                oldPlaces.insert(moved->from.lexically_normal());
        }
        for (const auto& change : record_.changes) {
            if (const auto* moved = std::get_if<UndoChange::Moved>(&change.change);
                moved && oldPlaces.contains(moved->to.lexically_normal()))
                return true;
        }
        return false;
    }

    void problem(const fs::path& url, AnyError error)
    {
        outcome_.problems.push_back(ItemFailure{url, std::move(error)});
    }

    /// Whether the item at place is as the operation left it; records the problem when not.
    bool unchanged(const fs::path& place, const std::optional<ItemStamp>& recorded)
    {
        const auto current = ItemStamp::of(place);
        if (!current) {
            problem(place, FileUndoError::missing(nameOf(place)));
            return false;
        }
        if (recorded && !recorded->matches(current)) {
            problem(place, FileUndoError::changedSince(nameOf(place)));
            return false;
        }
        return true;
    }

    /// Every item of a chain first steps aside to a hidden name in its own folder, so that every
    /// old place the chain needs is free before anything goes back.
    void stageMovedItems()
    {
        for (auto index = record_.changes.size(); index-- > 0;) {
            const auto* moved = std::get_if<UndoChange::Moved>(&record_.changes[index].change);
            if (!moved)
                continue;
            checked_.insert(index);
            if (!unchanged(moved->to, moved->stamp))
                continue;
            const auto staging = moved->to.parent_path() / (".orbisk-undo-" + Uuid::random());
            if (auto renamed = ExclusiveRename::rename(moved->to, staging); !renamed) {
                problem(moved->to, FileOperationError::system(renamed.error(), "move", moved->to));
                continue;
            }
            staged_[index] = staging;
        }
    }

    void revert(std::size_t, const UndoChange::Created& change)
    {
        if (!unchanged(change.at, change.stamp))
            return;
        // The changes inside a folder are reverted before the folder itself. When one of them was
        // refused, what it left is still in the folder, and trashing the folder would take along
        // the very item the report says was left as it is.
        if (leftSomethingInside(change.at)) {
            problem(change.at, FileUndoError::keptFolder(nameOf(change.at)));
            return;
        }
        auto trashed = trash_(change.at);
        if (!trashed) {
            problem(change.at, std::move(trashed.error()));
            return;
        }
        outcome_.inverse.changes.push_back(UndoChange::trashed(change.at, *trashed, ItemStamp::of(*trashed)));
    }

    /// Whether a problem of this revert so far concerns an item below folder.
    bool leftSomethingInside(const fs::path& folder) const
    {
        for (const auto& failure : outcome_.problems) {
            if (Paths::isSameOrInside(failure.url, folder) && !Paths::isSameOrInside(folder, failure.url))
                return true;
        }
        return false;
    }

    void revert(std::size_t index, const UndoChange::Moved& change)
    {
        const auto staging = staged_.find(index);
        const bool isStaged = staging != staged_.end();
        if (!isStaged && (checked_.contains(index) || !unchanged(change.to, change.stamp)))
            return;
        const auto current = isStaged ? staging->second : change.to;
        if (isTaken(change.from)) {
            problem(change.to, FileUndoError::placeTaken(nameOf(change.from)));
        } else {
            const auto made = makeMissingFolders(change.from.parent_path(), change.to);
            if (made && moveBack(current, change.from, change.to, false)) {
                for (const auto& folder : *made)
                    outcome_.inverse.changes.push_back(UndoChange::created(folder, ItemStamp::of(folder)));
                outcome_.inverse.changes.push_back(
                    UndoChange::moved(change.to, change.from, ItemStamp::of(change.from)));
                return;
            }
            if (made)
                for (auto folder = made->rbegin(); folder != made->rend(); ++folder)
                    ::rmdir(folder->c_str());
        }
        if (isStaged)
            unstage(current, change.to);
    }

    void revert(std::size_t, const UndoChange::RemovedFolder& change)
    {
        struct stat status {};
        if (::lstat(change.at.c_str(), &status) == 0) {
            // Made again since (by the user, or for an item that went back): the items can go in.
            if (!S_ISDIR(status.st_mode))
                problem(change.at, FileUndoError::placeTaken(nameOf(change.at)));
            return;
        }
        const auto made = makeMissingFolders(change.at.parent_path(), change.at);
        if (!made)
            return;
        if (::mkdir(change.at.c_str(), 0700) != 0) {
            problem(change.at, FileOperationError::system(errno, "create the folder", change.at));
            for (auto folder = made->rbegin(); folder != made->rend(); ++folder)
                ::rmdir(folder->c_str());
            return;
        }
        ::chmod(change.at.c_str(), change.mode | S_IRWXU);
        for (const auto& folder : *made)
            outcome_.inverse.changes.push_back(UndoChange::created(folder, ItemStamp::of(folder)));
        outcome_.inverse.changes.push_back(UndoChange::created(change.at, ItemStamp::of(change.at)));
        modes_.emplace_back(change.at, change.mode);
    }

    /// Makes the folders from the nearest existing one down to folder, which an item going back
    /// needs; returns them outermost first, or nothing after reporting against reported.
    std::optional<std::vector<fs::path>> makeMissingFolders(const fs::path& folder, const fs::path& reported)
    {
        std::vector<fs::path> missing;
        for (fs::path at = folder; !at.empty() && at != at.root_path() && !isTaken(at); at = at.parent_path())
            missing.push_back(at);
        std::vector<fs::path> made;
        for (auto at = missing.rbegin(); at != missing.rend(); ++at) {
            if (::mkdir(at->c_str(), 0777) != 0) {
                problem(reported, FileOperationError::system(errno, "create the folder for", reported));
                for (auto back = made.rbegin(); back != made.rend(); ++back)
                    ::rmdir(back->c_str());
                return std::nullopt;
            }
            made.push_back(*at);
        }
        return made;
    }

    void revert(std::size_t, const UndoChange::Trashed& change)
    {
        // The Trash reuses a name once its item is gone: what is there now may have been trashed
        // later, by anyone, and must stay where it is, together with its .trashinfo file.
        const auto inTrash = ItemStamp::of(change.inTrash);
        if (!inTrash || (change.stamp && !change.stamp->matches(inTrash))) {
            problem(change.original, FileUndoError::goneFromTrash(nameOf(change.original)));
            return;
        }
        if (isTaken(change.original)) {
            problem(change.inTrash, FileUndoError::placeTaken(nameOf(change.original)));
            return;
        }
        if (!moveBack(change.inTrash, change.original, change.inTrash, true))
            return;
        outcome_.inverse.changes.push_back(UndoChange::created(change.original, ItemStamp::of(change.original)));
    }

    /// Moves an item from current to its old place: a rename where it can be one, otherwise (on
    /// another volume) the transfer engine's checked copy-then-delete, which leaves in current what
    /// changed meanwhile. Returns whether the item is at its old place now; problems are reported
    /// against reported.
    bool moveBack(const fs::path& current, const fs::path& oldPlace, const fs::path& reported, bool fromTrash)
    {
        auto renamed = fromTrash ? Trash::putBack(current, oldPlace) : ExclusiveRename::rename(current, oldPlace);
        if (renamed)
            return true;
        const int code = renamed.error();
        if (code == EXDEV) {
            auto moved = CrossVolumeMove::move(current, oldPlace);
            for (auto& left : moved.problems)
                outcome_.problems.push_back(std::move(left));
            if (moved.placeTaken)
                problem(reported, FileUndoError::placeTaken(nameOf(oldPlace)));
            // The info file goes only with the last of the item: what stayed is still listed.
            if (fromTrash && moved.arrived && !isTaken(current))
                ::unlink(Trash::infoFileFor(current).c_str());
            return moved.arrived;
        }
        if (code == EEXIST)
            problem(reported, FileUndoError::placeTaken(nameOf(oldPlace)));
        else
            problem(reported, FileOperationError::system(code, "move", reported));
        return false;
    }

    /// A staged item that cannot go back returns to where the operation left it.
    void unstage(const fs::path& staging, const fs::path& place)
    {
        if (auto back = ExclusiveRename::rename(staging, place); !back)
            problem(place, FileOperationError::renameLeftAtTemporaryName(back.error(), place, nameOf(staging)));
    }

    const UndoRecord& record_;
    const TrashService& trash_;
    UndoOutcome outcome_;
    std::map<std::size_t, fs::path> staged_;           ///< chain items waiting under their hidden names
    std::set<std::size_t> checked_;                    ///< moves whose stamps were already checked
    std::vector<std::pair<fs::path, unsigned>> modes_; ///< folders made again, with their own modes
};

} // namespace

UndoOutcome revert(const UndoRecord& record, const TrashService& trash)
{
    return Reverter(record, trash).run();
}

OperationReport reportOf(UndoOutcome outcome)
{
    OperationReport report;
    for (const auto& change : outcome.inverse.changes) {
        std::visit(
            [&report](const auto& made) {
                using Made = std::decay_t<decltype(made)>;
                if constexpr (std::is_same_v<Made, UndoChange::Created>)
                    report.completed.push_back({made.at, made.at});
                else if constexpr (std::is_same_v<Made, UndoChange::Moved>)
                    report.completed.push_back({made.from, made.to});
                else if constexpr (std::is_same_v<Made, UndoChange::Trashed>)
                    report.completed.push_back({made.original, made.inTrash});
                else
                    report.completed.push_back({made.at, made.at});
            },
            change.change);
    }
    report.failures = std::move(outcome.problems);
    report.undoChanges = std::move(outcome.inverse.changes);
    return report;
}

TrashService systemTrash()
{
    return [](const fs::path& item) -> std::expected<fs::path, AnyError> {
        auto moved = Trash::forCurrentUser().moveToTrash(item);
        if (moved)
            return *moved;
        if (moved.error() == ENOENT)
            return std::unexpected(AnyError(FileOperationError::itemMissing(item)));
        return std::unexpected(AnyError(FileOperationError::system(moved.error(), "move", item)));
    };
}

} // namespace orbisk::FileUndo
