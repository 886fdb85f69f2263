// Tells a pane that the one folder it shows has changed on disk or has gone away (inotify).
#pragma once

#include <filesystem>
#include <optional>

namespace orbisk {

/// Watches one folder, not its subtree, through its own non-blocking inotify descriptor. The owner
/// waits for the descriptor to become readable (the app with a QSocketNotifier, tests with poll)
/// and then calls readPendingEvents(). Debouncing is the owner's business. Not thread-safe: use a
/// watcher from one thread. After directoryGone the watch is dropped; the owner opens a new watcher
/// if the path exists again.
class DirectoryWatcher {
public:
    enum class Event {
        contentsChanged, ///< entries were added, removed, renamed or changed inside the folder
        directoryGone,   ///< the folder itself was deleted, renamed or moved, or its volume unmounted
    };

    /// A watcher on folder (links are followed), or nothing when the folder cannot be watched: it
    /// is missing, no folder, unreadable, or the inotify limits are reached. Never an error.
    [[nodiscard]] static std::optional<DirectoryWatcher> open(const std::filesystem::path& folder);

    DirectoryWatcher(DirectoryWatcher&& other) noexcept;
    DirectoryWatcher& operator=(DirectoryWatcher&& other) noexcept;
    DirectoryWatcher(const DirectoryWatcher&) = delete;
    DirectoryWatcher& operator=(const DirectoryWatcher&) = delete;
    ~DirectoryWatcher();

    /// The descriptor to wait on for reading (close-on-exec, non-blocking); -1 once cancelled.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Reads every event queued so far and sums them up as one: directoryGone when any of them says
    /// the folder went away, else contentsChanged; nothing when no event was waiting or the
    /// watcher is cancelled. Never blocks.
    [[nodiscard]] std::optional<Event> readPendingEvents();

    /// Stops watching and closes the descriptor; events still queued are dropped and nothing is
    /// reported after this. Disable any notifier on descriptor() first. Safe to call twice.
    void cancel();

    /// Whether cancel() has run (or the watcher was moved from).
    [[nodiscard]] bool isCancelled() const { return descriptor_ < 0; }

private:
    DirectoryWatcher(int descriptor, int watch) : descriptor_(descriptor), watch_(watch) {}

    int descriptor_ = -1;
    int watch_ = -1; ///< the inotify watch, -1 once the folder is gone
};

} // namespace orbisk
