#include "RecordFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <utility>

#include "operations/NameGenerator.h"
#include "support/DisplayText.h"
#include "support/UnicodeText.h"
#include "support/Uuid.h"

namespace orbisk::cli {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

std::expected<std::vector<UndoRecord>, std::string> readStack(const Json& json, const char* key)
{
    if (!json.contains(key) || !json.at(key).is_array())
        return std::unexpected(std::string("“") + key + "” is not a list");
    std::vector<UndoRecord> records;
    for (const auto& entry : json.at(key)) {
        auto record = UndoRecord::fromJson(entry);
        if (!record)
            return std::unexpected(record.error());
        records.push_back(std::move(*record));
    }
    return records;
}

std::string describe(const fs::path& file)
{
    return "“" + DisplayText::visible(file.native()) + "”";
}

// A hidden name beside file: "." + its name + suffix, the name shortened by whole characters so
// that a history file with a long name still gets its lock and its temporary copy.
fs::path besideName(const fs::path& file, const std::string& suffix)
{
    const std::size_t room = NameGenerator::maximumNameBytes - 1 - suffix.size();
    return "." + std::string(UnicodeText::prefixOfWholeCharacters(file.filename().native(), room)) + suffix;
}

bool writeAll(int fd, std::string_view data)
{
    while (!data.empty()) {
        const auto written = ::write(fd, data.data(), data.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

std::expected<UndoHistory, std::string> UndoHistory::load(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        if (errno == ENOENT)
            return UndoHistory{};
        return std::unexpected("can’t read " + describe(file) + ": " + std::strerror(errno));
    }
    std::stringstream contents;
    contents << in.rdbuf();
    const auto json = Json::parse(contents.str(), nullptr, false);
    if (json.is_discarded() || !json.is_object())
        return std::unexpected(describe(file) + " is not an undo history");
    for (const auto& [key, value] : json.items()) {
        if (key != "undo" && key != "redo")
            return std::unexpected(describe(file) + " has an unknown key “" + key + "”");
    }
    auto undo = readStack(json, "undo");
    auto redo = readStack(json, "redo");
    if (!undo)
        return std::unexpected(describe(file) + ": " + undo.error());
    if (!redo)
        return std::unexpected(describe(file) + ": " + redo.error());
    return UndoHistory{std::move(*undo), std::move(*redo)};
}

std::expected<void, std::string> UndoHistory::save(const fs::path& file) const
{
    Json undoList = Json::array();
    for (const auto& record : undo)
        undoList.push_back(record.toJson());
    Json redoList = Json::array();
    for (const auto& record : redo)
        redoList.push_back(record.toJson());
    const auto text = Json{{"undo", std::move(undoList)}, {"redo", std::move(redoList)}}.dump(2) + "\n";

    const auto folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const auto temporary = folder / besideName(file, ".tmp-" + Uuid::random());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return std::unexpected("can’t write beside " + describe(file) + ": " + std::strerror(errno));
    const bool written = writeAll(fd, text) && ::fsync(fd) == 0;
    const int writeError = errno;
    ::close(fd);
    // Replacing the history file is the point here: it is ours, not one of the user's items.
    if (!written || ::rename(temporary.c_str(), file.c_str()) != 0) {
        const int error = written ? errno : writeError;
        ::unlink(temporary.c_str());
        return std::unexpected("can’t write " + describe(file) + ": " + std::strerror(error));
    }
    return {};
}

std::expected<RecordArguments, std::string> parseRecordArguments(std::span<const std::string> arguments)
{
    RecordArguments result;
    bool options = true;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto& argument = arguments[i];
        if (options && argument == "--") {
            options = false;
        } else if (options && argument == "--record") {
            if (i + 1 == arguments.size())
                return std::unexpected("--record needs a file name");
            result.recordFile = arguments[++i];
        } else if (options && argument.starts_with("--record=")) {
            result.recordFile = argument.substr(9);
            if (result.recordFile->empty())
                return std::unexpected("--record needs a file name");
        } else if (options && argument.starts_with("-") && argument != "-") {
            return std::unexpected("unknown option “" + DisplayText::visible(argument) + "”");
        } else {
            result.positional.push_back(argument);
        }
    }
    return result;
}

std::optional<UndoHistory> loadHistory(const std::optional<fs::path>& file)
{
    if (!file)
        return UndoHistory{};
    auto history = UndoHistory::load(*file);
    if (!history) {
        std::cerr << "orbisk-cli: " << history.error() << "\n";
        return std::nullopt;
    }
    return std::move(*history);
}

std::expected<HistoryLock, std::string> HistoryLock::acquire(const fs::path& file)
{
    const auto folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const auto lockFile = folder / besideName(file, ".lock");
    const int fd = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return std::unexpected("can’t lock " + describe(file) + ": " + std::strerror(errno));
    int locked = 0;
    do
        locked = ::flock(fd, LOCK_EX);
    while (locked != 0 && errno == EINTR);
    if (locked != 0) {
        const int error = errno;
        ::close(fd);
        return std::unexpected("can’t lock " + describe(file) + ": " + std::strerror(error));
    }
    return HistoryLock(fd);
}

HistoryLock::HistoryLock(HistoryLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

HistoryLock::~HistoryLock()
{
    if (fd_ >= 0)
        ::close(fd_); // closing releases the lock
}

bool remember(const std::optional<fs::path>& file, const UndoRecord& record)
{
    if (!file || record.isEmpty())
        return true;
    auto lock = HistoryLock::acquire(*file);
    if (!lock) {
        std::cerr << "orbisk-cli: " << lock.error() << "\n";
        return false;
    }
    auto history = loadHistory(file);
    if (!history)
        return false;
    history->undo.push_back(record);
    history->redo.clear();
    if (auto saved = history->save(*file); !saved) {
        std::cerr << "orbisk-cli: " << saved.error() << "\n";
        return false;
    }
    return true;
}

} // namespace orbisk::cli
