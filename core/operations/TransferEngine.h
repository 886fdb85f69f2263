// Copies or moves a list of items into one folder, with every conflict rule, safely across volumes.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "operations/CancellationToken.h"
#include "operations/ConflictChoice.h"
#include "operations/FileCopyQueue.h"
#include "operations/FileOperationError.h"
#include "operations/NameConflict.h"
#include "operations/OperationProgressTracker.h"
#include "operations/OperationReport.h"
#include "platform/CopyOptions.h"
#include "platform/MountTable.h"

namespace orbisk {

/// One engine per operation: build it, set what the caller needs, call run() once on a worker
/// thread. The token and the tracker must outlive run(); they are the only state shared with other
/// threads. Per-item failures go into the report and the run goes on; cancellation stops between
/// items and inside files; a full destination volume stops the run with an abort reason. Nothing
/// is ever overwritten in place and nothing the engine left half-made stays behind.
class TransferEngine {
public:
    enum class Kind : std::uint8_t { copy, move };

    /// Called on the worker thread for a clash that no standing answer covers; blocks until the
    /// user answers. Without a handler every such clash is answered cancel.
    using ConflictHandler = std::function<ConflictDecision(const NameConflict&)>;
    /// Moves an item being replaced to the Trash and says where it went (nothing when unknown),
    /// or fails with an errno. Without one, the current user's Trash is used.
    using ReplacedItemDisposer =
        std::function<std::expected<std::optional<std::filesystem::path>, int>(const std::filesystem::path&)>;

    TransferEngine(Kind kind, std::vector<std::filesystem::path> sources, std::filesystem::path destinationDirectory,
                   CancellationToken& cancellation, OperationProgressTracker& progress);

    /// The name a source must get in the destination (from a new name or a mask); others keep theirs.
    std::map<std::filesystem::path, std::string> targetNames;
    /// Move by copy-then-delete even within one volume.
    bool forceCopyThenDelete = false;
    ConflictHandler conflictHandler;
    /// A standing answer for every clash; absent means ask.
    std::optional<ConflictChoice> conflictPolicy;
    /// Merge a folder into a mergeable folder of the same name without asking.
    bool mergeFolders = false;
    ReplacedItemDisposer replacedItemDisposer;
    /// Called once, on the worker thread, before a copy-then-delete move removes its sources.
    std::function<void()> beforeSourceRemoval;
    /// How regular files are copied (chunk size between progress and cancellation checks).
    CopyOptions copyOptions;
    /// How many folder levels of a tree at most keep their descriptors open while the levels below
    /// are walked; fewer when the process's limit of open files is low, so that a kept level's
    /// three descriptors stay within a quarter of it. Deeper levels are listed in full and reopened
    /// by name, so that a deep tree never exhausts the process's descriptors.
    std::size_t foldersKeptOpen = 64;

    /// Runs the whole operation on the calling thread and returns its report. Call once.
    [[nodiscard]] OperationReport run();

private:
    struct Plan {
        std::filesystem::path source;
        std::string targetName;
        bool isRealDirectory = false;
        bool useRename = false;
        bool crossesVolume = false;
        std::int64_t itemCount = 1;
        std::int64_t byteCount = 0;
        /// What the copy writes: allocated blocks of sparse files, each hard-linked file once.
        std::int64_t writeBytes = 0;
        /// The first mount point met inside the folder (the folder itself when it is one).
        std::optional<std::filesystem::path> mountPoint;
        /// The destination folder is the folder or lies inside it, by device and inode.
        bool holdsDestination = false;
    };

    /// A file-system object, by device and inode.
    using Identity = std::pair<dev_t, ino_t>;

    /// How the entries of one top-level item travel.
    struct Mode {
        bool move = false;
        bool useRename = false;
    };

    struct Resolution {
        enum class Kind : std::uint8_t { use, replace, merge, stop };
        Kind kind = Kind::stop;
        std::filesystem::path url;
        bool renamingExisting = false;
    };

    struct Replacement {
        std::filesystem::path existing;
        bool renamingExisting = false;
    };

    /// One entry copied during a copy-then-delete move, as its source was before the copy. The
    /// path lives in copiedPaths_, so a record costs a few dozen bytes however long the path.
    struct CopiedRecord {
        std::uint64_t pathOffset = 0;
        std::uint32_t pathLength = 0;
        bool isDirectory = false;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = 0;
        struct timespec modified {};
    };

    enum class CopyResult : std::uint8_t { copied, failed, cancelled, volumeFull };

    /// Counts a folder level against foldersKeptOpen while it keeps descriptors open.
    class OpenLevel {
    public:
        OpenLevel(std::size_t& levels, bool keep) : levels_(keep ? &levels : nullptr)
        {
            if (levels_)
                ++*levels_;
        }
        ~OpenLevel()
        {
            if (levels_)
                --*levels_;
        }
        OpenLevel(const OpenLevel&) = delete;
        OpenLevel& operator=(const OpenLevel&) = delete;

    private:
        std::size_t* levels_;
    };

    // Planning (TransferEngine.cpp)
    [[nodiscard]] bool checkSource(const std::filesystem::path& source, const struct stat& destination,
                                   const std::string& targetName);
    [[nodiscard]] std::optional<Plan> makePlan(const std::filesystem::path& source, const struct stat& destination);
    [[nodiscard]] bool countTree(int folderFd, const std::filesystem::path& path, dev_t device, Plan& plan);
    [[nodiscard]] std::int64_t countFile(int folderFd, const char* name, const struct stat& status);
    void findMountPoints(const std::filesystem::path& source, Plan& plan);
    [[nodiscard]] bool hasRoomFor(const std::vector<Plan>& plans);
    [[nodiscard]] std::int64_t bytesToWrite(const std::filesystem::path& source,
                                            std::optional<std::filesystem::path> target);
    void finishTopLevel(std::int64_t itemsDone, std::int64_t bytesDone);

    // Performing items (TransferEngineItems.cpp)
    void performItem(const std::filesystem::path& source, const std::filesystem::path& folder, const std::string& name,
                     Mode mode, std::int64_t itemCount);
    void mergeInto(const std::filesystem::path& source, const std::filesystem::path& existing, Mode mode);
    void recordSuccess(const std::filesystem::path& source, const std::filesystem::path& final, bool moved);
    [[nodiscard]] bool leaveMountedVolume(const std::filesystem::path& source, bool move);
    [[nodiscard]] std::optional<std::filesystem::path> mountPointIn(const std::filesystem::path& folder) const;

    // Clashes (TransferEngineConflicts.cpp)
    [[nodiscard]] Resolution resolveClash(const std::filesystem::path& source, const struct stat& sourceStatus,
                                          const std::filesystem::path& existing, const struct stat& existingStatus,
                                          std::int64_t itemCount);
    [[nodiscard]] ConflictChoice decide(const NameConflict& conflict);
    void skip(const std::filesystem::path& source, std::int64_t itemCount);

    // Replacing (TransferEngineReplace.cpp)
    [[nodiscard]] std::optional<std::filesystem::path> freeReplacingName(const std::filesystem::path& folder,
                                                                         const std::string& name) const;
    [[nodiscard]] bool finishReplacement(const Replacement& replacement, const std::filesystem::path& temporary,
                                         const std::filesystem::path& source, bool renamedSource);
    void giveBackTemporary(const std::filesystem::path& temporary, const std::filesystem::path& source,
                           bool renamedSource);

    // Copying (TransferEngineCopy.cpp)
    [[nodiscard]] CopyResult copyEntry(const std::filesystem::path& source, const std::filesystem::path& destination,
                                       bool recordForMove);
    [[nodiscard]] CopyResult copyFolder(const std::filesystem::path& source, dev_t device,
                                        const std::filesystem::path& destination, bool recordForMove);
    [[nodiscard]] CopyResult copyRegularFile(const std::filesystem::path& source, const struct stat& status,
                                             const std::filesystem::path& destination);
    [[nodiscard]] CopyResult fileCopyFailed(const std::filesystem::path& source,
                                            const std::expected<CopyOutcome, CopyError>& copied);
    [[nodiscard]] FileCopyQueue::Progress queueProgress();
    [[nodiscard]] CopyResult takeQueuedCopies(bool recordForMove, bool all);
    void stopForFullVolume(int code);
    void removePartial(const std::filesystem::path& destination);
    void fail(const std::filesystem::path& item, FileOperationError error);

    // Copy-then-delete (TransferEngineRemoval.cpp)
    void record(const std::filesystem::path& source, const struct stat& status);
    void forgetRecordsFrom(std::size_t mark);
    void forgetRecordsUnder(std::size_t mark, const std::filesystem::path& folder);
    [[nodiscard]] bool canEmptyAndRemove(const std::filesystem::path& source);
    void reportVanished(const std::vector<std::string>& vanished);
    void removeCopiedSources();

    Kind kind_;
    std::vector<std::filesystem::path> sources_;
    std::filesystem::path destinationDirectory_;
    CancellationToken& cancellation_;
    OperationProgressTracker& progress_;

    OperationReport report_;
    std::optional<ConflictChoice> rememberedChoice_;
    /// The copy method to start with for files from each source volume, so that later files skip
    /// the methods the volumes refused. Copies go to the destination folder's volume; where a
    /// merged folder is another volume's mount point, a stale guess only costs speed, since every
    /// method falls back to the next.
    std::map<dev_t, CopyMethod> methodFrom_;
    /// Set when the destination is full; the queue's copies under way read it on their threads.
    std::atomic<bool> stopRequested_ = false;
    /// Regular files inside copied folders, copied on worker threads; made at the first one.
    std::unique_ptr<FileCopyQueue> queue_;
    /// Mount points inside the sources, spelled as the sources are: a copy leaves them out and a
    /// move that would copy them is refused. Read from the mount table, so that bind mounts, which
    /// share their file system's device number, count too; folders on another device as well.
    std::set<std::string> mountPoints_;
    /// The destination folder and each folder above it, to tell a destination inside a source
    /// through any path (a link, a bind mount, another letter case).
    std::vector<Identity> destinationChain_;
    Identity destination_{};
    /// Read once per run; absent when the kernel's table cannot be read (then only a change of
    /// device marks a mount point).
    std::optional<MountTable> mountTable_;
    /// Folders this run writes into (created or merged into): a source folder among them would be
    /// copied into itself, a nest without end.
    std::set<Identity> writtenFolders_;
    /// Folder levels currently holding descriptors, against keptLevels_ (set at the start of run()).
    std::size_t openLevels_ = 0;
    std::size_t keptLevels_ = 1;
    std::vector<CopiedRecord> copiedForMove_;
    std::string copiedPaths_;
    /// Sources deliberately left behind by a move (skipped or failed), so that the removal does
    /// not count them again; holds only those, never every entry.
    std::set<std::string> leftOnPurpose_;
    /// Source folders of copy-then-delete merges: removing one, once emptied, is an undo change.
    std::set<std::string> mergedSources_;
};

} // namespace orbisk
