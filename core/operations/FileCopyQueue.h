// Copies the files of a folder tree on worker threads, handing the results back in queue order.
#pragma once

#include <sys/stat.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/CopyError.h"
#include "platform/CopyOptions.h"
#include "platform/OwnedFd.h"

namespace orbisk {

/// Copying many small files is mostly waiting on the file system's per-file work (creating,
/// linking, setting times), which two files can do at once. The queue copies files on a few
/// threads while the caller goes on walking the tree, and gives every result back in the order
/// the files were queued, so that what the caller reports and records does not depend on which
/// thread was faster. Used from one thread; the callbacks run on the workers.
class FileCopyQueue {
public:
    /// One regular file to copy: the entry `name` of the open folder `from` to the same name in
    /// the open folder `to`. The folders are shared, so they stay open until the last of their
    /// files is copied.
    struct Job {
        std::shared_ptr<const OwnedFd> fromFolder;
        std::shared_ptr<const OwnedFd> toFolder;
        std::filesystem::path source;      ///< full path, for messages and the caller's records
        std::filesystem::path destination; ///< full path, for messages
        CopyOptions options;               ///< its learnedMethod is ignored: see Done::learned
    };

    struct Done {
        Job job;
        std::expected<CopyOutcome, CopyError> result;
        struct stat status {}; ///< the source as it was opened, when the copy got that far
        CopyMethod learned;    ///< what the copy learned about the pair of file systems
    };

    /// Called on a worker before and during each copy with the bytes that file moved since the
    /// last call; answering stop cancels that copy. Must be thread-safe.
    using Progress = std::function<CopyControl(const std::filesystem::path& source, std::int64_t newBytes)>;

    /// Starts `workers` threads (at least one).
    FileCopyQueue(std::size_t workers, Progress progress);
    /// Waits for the copies under way, drops those not started, and stops the threads.
    ~FileCopyQueue();
    FileCopyQueue(const FileCopyQueue&) = delete;
    FileCopyQueue& operator=(const FileCopyQueue&) = delete;

    /// Queues a copy. The queue holds at most a few dozen copies: the caller takes results when
    /// full() says so, which keeps memory flat however large the tree.
    void push(Job job);
    [[nodiscard]] bool full() const;

    /// Hands over finished copies from the front of the queue, oldest first. With `all`, waits
    /// until every queued copy is done and hands over all of them; otherwise waits until at least
    /// half of a full queue is done, so that the caller wakes once per batch and not per file.
    [[nodiscard]] std::vector<Done> takeFinished(bool all);

    /// A sensible number of workers for this machine: its processors, between two and four.
    [[nodiscard]] static std::size_t defaultWorkers();

private:
    struct Slot {
        Job job;
        std::optional<Done> done;
    };

    void work();

    Progress progress_;
    std::size_t limit_;
    mutable std::mutex lock_;
    std::condition_variable queued_;
    std::condition_variable finished_;
    /// Oldest first. A worker keeps a reference to the slot it copies; a deque keeps references
    /// to its elements valid while others are added at the back, and a slot leaves from the
    /// front only once it is done.
    std::deque<Slot> slots_;
    std::size_t nextToStart_ = 0; ///< index in slots_ of the first copy no worker has taken
    std::size_t finishedCount_ = 0;
    std::size_t idleWorkers_ = 0;
    /// How many finished copies the caller waits for, or 0 when it is not waiting.
    std::size_t awaited_ = 0;
    bool stopping_ = false;
    std::vector<std::jthread> workers_;
};

} // namespace orbisk
