// The undo history of orbisk-cli: a JSON file of undo and redo records, written atomically.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "operations/UndoRecord.h"

namespace orbisk::cli {

/// Two stacks like the app's Edit menu: the newest record is at the back of each.
struct UndoHistory {
    std::vector<UndoRecord> undo;
    std::vector<UndoRecord> redo;

    /// Reads the file; a missing file is an empty history. Fails with a readable reason when the
    /// file cannot be read or is not a history this program wrote.
    [[nodiscard]] static std::expected<UndoHistory, std::string> load(const std::filesystem::path& file);

    /// Replaces the file as a whole: the new contents go to a hidden file beside it, created
    /// exclusively, which is then renamed over it; a failure leaves the old file as it was.
    [[nodiscard]] std::expected<void, std::string> save(const std::filesystem::path& file) const;
};

/// A command line split into its --record FILE option and the other arguments.
struct RecordArguments {
    std::optional<std::filesystem::path> recordFile;
    std::vector<std::string> positional;
};

/// Takes "--record FILE" or "--record=FILE" anywhere before "--"; fails with the problem for the
/// usage message (a missing file name, an unknown option).
[[nodiscard]] std::expected<RecordArguments, std::string> parseRecordArguments(std::span<const std::string> arguments);

/// Holds the history file's lock (flock on a hidden ".<name>.lock" beside it, which stays), so that
/// orbisk-cli runs sharing one history take turns at reading and writing it. Released when destroyed.
class HistoryLock {
public:
    /// Waits for the lock; fails with a readable reason when the lock file cannot be made.
    [[nodiscard]] static std::expected<HistoryLock, std::string> acquire(const std::filesystem::path& file);
    HistoryLock(HistoryLock&& other) noexcept;
    HistoryLock& operator=(HistoryLock&&) = delete;
    HistoryLock(const HistoryLock&) = delete;
    HistoryLock& operator=(const HistoryLock&) = delete;
    ~HistoryLock();

private:
    explicit HistoryLock(int fd) : fd_(fd) {}
    int fd_ = -1;
};

/// Appends record to the history in file (when given and the record is not empty) and clears the
/// redo stack, as a new operation does in the app. The history is read again under its lock, so
/// that what other runs recorded meanwhile stays. Prints the reason and returns false on failure.
bool remember(const std::optional<std::filesystem::path>& file, const UndoRecord& record);

/// Loads the history named on the command line, or an empty one; prints the reason on failure.
/// Commands that change files load it first to refuse a broken history before touching anything.
[[nodiscard]] std::optional<UndoHistory> loadHistory(const std::optional<std::filesystem::path>& file);

} // namespace orbisk::cli
