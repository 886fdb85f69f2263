// orbisk-cli list: a folder's items in the order and with the filter a pane would show them.
// A line per item: "d" for a folder (else "-"), "@" for a link, the size in bytes ("-" for
// folders), the modification time in UTC, the visible name. With --names: the raw name bytes and
// a newline, nothing else.
#include <cstdio>
#include <ctime>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "files/DirectoryReader.h"
#include "files/FileKind.h"
#include "files/FileSorter.h"
#include "files/MimeTypeTable.h"
#include "files/NameFilter.h"
#include "support/DisplayText.h"

namespace orbisk::cli {
namespace {

int runList(std::span<const std::string> arguments);

const Command listCommand{
    "list",
    "list [--sort name|size|date|kind] [--descending] [--no-folders-first] [--hidden] [--filter TEXT] [--names] "
    "FOLDER",
    runList,
};
const bool registered = registerCommand(listCommand);

struct Options {
    SortSpec sort;
    bool directoriesFirst = true;
    bool includeHidden = false;
    bool namesOnly = false;
    std::optional<std::string> filter;
    std::string folder;
};

/// The options, or the exit status of a usage error already reported.
std::expected<Options, int> parse(std::span<const std::string> arguments)
{
    Options options;
    bool haveFolder = false;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto& argument = arguments[i];
        const auto value = [&]() -> const std::string* { return i + 1 < arguments.size() ? &arguments[++i] : nullptr; };
        if (!optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && argument == "--sort") {
            const auto* raw = value();
            const auto column = raw ? sortColumnFromRaw(*raw) : std::nullopt;
            if (!column)
                return std::unexpected(usageError(listCommand, "--sort takes name, size, date or kind"));
            options.sort.column = *column;
        } else if (!optionsEnded && argument == "--descending") {
            options.sort.ascending = false;
        } else if (!optionsEnded && argument == "--no-folders-first") {
            options.directoriesFirst = false;
        } else if (!optionsEnded && argument == "--hidden") {
            options.includeHidden = true;
        } else if (!optionsEnded && argument == "--names") {
            options.namesOnly = true;
        } else if (!optionsEnded && argument == "--filter") {
            const auto* text = value();
            if (!text)
                return std::unexpected(usageError(listCommand, "--filter takes a text"));
            options.filter = *text;
        } else if (!optionsEnded && argument.starts_with("-") && argument != "-") {
            return std::unexpected(usageError(listCommand, "unknown option " + DisplayText::visible(argument)));
        } else if (haveFolder) {
            return std::unexpected(usageError(listCommand, "only one folder can be listed"));
        } else {
            options.folder = argument;
            haveFolder = true;
        }
    }
    if (!haveFolder)
        return std::unexpected(usageError(listCommand, "which folder?"));
    return options;
}

void appendDate(std::string& out, const std::optional<FileItem::Date>& date)
{
    if (!date) {
        out.append("-");
        return;
    }
    const auto seconds = std::chrono::floor<std::chrono::seconds>(*date);
    const std::time_t time = seconds.time_since_epoch().count();
    std::tm parts{};
    char text[32];
    if (::gmtime_r(&time, &parts) != nullptr && std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) > 0)
        out.append(text);
    else
        out.append("-");
}

void appendLine(std::string& out, const FileItem& item)
{
    out.push_back(item.isDirectory ? 'd' : item.isPackage ? 'p' : '-');
    out.push_back(item.isSymbolicLink ? '@' : ' ');
    const std::string size = item.size ? std::to_string(*item.size) : "-";
    out.append(size.size() < 15 ? 15 - size.size() : 1, ' ');
    out.append(size);
    out.append("  ");
    appendDate(out, item.modificationDate);
    out.append("  ");
    out.append(DisplayText::displayName(item.name()));
    out.push_back('\n');
}

int runList(std::span<const std::string> arguments)
{
    const auto options = parse(arguments);
    if (!options)
        return options.error();
    std::error_code ignored;
    auto folder = std::filesystem::absolute(options->folder, ignored);
    if (folder.empty())
        folder = options->folder;

    auto items = DirectoryReader::read(folder, options->includeHidden);
    if (!items) {
        std::cerr << "orbisk-cli list: cannot list “" << DisplayText::visible(options->folder)
                  << "”: " << items.error().message() << "\n";
        return exitFailure;
    }
    if (options->filter) {
        const NameFilter filter(*options->filter);
        std::erase_if(*items, [&](const FileItem& item) { return !filter.matches(item.name()); });
    }

    MimeTypeTable types = MimeTypeTable::forEnvironment();
    const KindDescriber describe = [&types](const FileItem& item) {
        return FileKind::describe(item, [&types](std::string_view extension) { return types.describe(extension); });
    };
    const auto listing = FileSorter::sorted(std::move(*items), options->sort, options->directoriesFirst, {}, describe);

    std::string out;
    out.reserve(1 << 20);
    for (const auto& item : listing) {
        if (options->namesOnly) {
            out.append(item.name());
            out.push_back('\n');
        } else {
            appendLine(out, item);
        }
        if (out.size() >= (1 << 20) - 4096) {
            std::fwrite(out.data(), 1, out.size(), stdout);
            out.clear();
        }
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    if (std::fflush(stdout) != 0) {
        std::perror("orbisk-cli list: cannot write the listing");
        return exitFailure;
    }
    return exitSuccess;
}

} // namespace
} // namespace orbisk::cli
