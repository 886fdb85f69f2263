// orbisk-cli zip | extract | ziplist: ZIP archives from the command line, with the app's safety rules.
#include <fcntl.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <iostream>

#include "ArgumentPaths.h"
#include "Command.h"
#include "Interruption.h"
#include "Problems.h"
#include "ProgressLine.h"
#include "RecordFile.h"
#include "platform/OwnedFd.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "zip/ZipNames.h"
#include "zip/ZipReader.h"
#include "zip/ZipWriter.h"

namespace orbisk::cli {
namespace {

namespace fs = std::filesystem;

int runZip(std::span<const std::string> arguments);
int runExtract(std::span<const std::string> arguments);
int runList(std::span<const std::string> arguments);

const Command zipCommand{"zip", "zip [--record FILE] SOURCE... ARCHIVE.zip", &runZip};
const Command extractCommand{"extract", "extract [--record FILE] ARCHIVE.zip DESTINATION_FOLDER", &runExtract};
const Command listCommand{"ziplist", "ziplist ARCHIVE.zip", &runList};
const bool registered = registerCommand(zipCommand) && registerCommand(extractCommand) && registerCommand(listCommand);

// Shared ending of zip and extract: the created item, the undo record, the alert, the status.
int finish(const OperationReport& report, const std::optional<fs::path>& recordFile, const std::string& undoName,
           std::string_view verb)
{
    for (const auto& change : report.undoChanges)
        if (const auto* created = std::get_if<UndoChange::Created>(&change.change))
            std::cout << created->at.native() << "\n";
    const bool remembered = remember(recordFile, {undoName, report.undoChanges});
    (void)presentReport(report, verb);
    if (report.cancelled && report.failures.empty() && !report.abortReason)
        std::cerr << translate("Orbisk", "The operation was cancelled.") << "\n";
    return report.isCompleteSuccess() && remembered ? exitSuccess : exitFailure;
}

int runZip(std::span<const std::string> arguments)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(zipCommand, parsed.error());
    if (parsed->positional.size() < 2)
        return usageError(zipCommand, "needs at least one source and the archive to create");
    auto items = itemArguments(std::span(parsed->positional).first(parsed->positional.size() - 1));
    if (!items)
        return usageError(zipCommand, items.error());
    if (!loadHistory(parsed->recordFile))
        return exitFailure;
    const std::vector<fs::path> sources = std::move(*items);
    const fs::path archive = argumentPath(parsed->positional.back());

    CancellationToken token;
    OperationProgressTracker tracker;
    OperationReport report;
    {
        CancelOnInterrupt interrupt(token);
        ProgressLine line(tracker);
        report = ZipWriter::compress(sources, archive, token, tracker);
    }
    const std::string undoName =
        sources.size() == 1 ? L(translate("Orbisk", "Compress “%@”"), sources.front().filename().native())
                            : L(translate("Orbisk", "Compress %lld items"), static_cast<long long>(sources.size()));
    return finish(report, parsed->recordFile, undoName, translate("Orbisk", "Compress"));
}

int runExtract(std::span<const std::string> arguments)
{
    auto parsed = parseRecordArguments(arguments);
    if (!parsed)
        return usageError(extractCommand, parsed.error());
    if (parsed->positional.size() != 2)
        return usageError(extractCommand, "needs an archive and a destination folder");
    if (!loadHistory(parsed->recordFile))
        return exitFailure;
    const fs::path archive = argumentPath(parsed->positional[0]);
    const fs::path destination = folderArgument(parsed->positional[1]);

    CancellationToken token;
    OperationProgressTracker tracker;
    OperationReport report;
    {
        CancelOnInterrupt interrupt(token);
        ProgressLine line(tracker);
        report = ZipReader::extract(archive, destination, token, tracker);
    }
    return finish(report, parsed->recordFile, L(translate("Orbisk", "Extract “%@”"), archive.filename().native()),
                  translate("Orbisk", "Extract"));
}

std::string methodWord(std::uint16_t method)
{
    if (method == 0)
        return "stored";
    if (method == 8)
        return "deflated";
    return "method " + std::to_string(method);
}

int runList(std::span<const std::string> arguments)
{
    if (arguments.size() != 1 || arguments.front().starts_with("--"))
        return usageError(listCommand, arguments.size() == 1 ? "takes no options" : "needs one archive");
    const fs::path archive = argumentPath(arguments.front());
    OwnedFd fd(::open(archive.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!fd.isOpen())
        return presentError(translate("Orbisk", "The archive can’t be read."),
                            FileOperationError::system(errno, "read", archive));
    auto list = ZipReader::entries(fd.get());
    if (!list) {
        std::cerr << list.error().errorDescription() << "\n";
        return exitFailure;
    }
    bool refused = false;
    for (const auto& entry : *list) {
        char line[96];
        std::snprintf(line, sizeof line, "%-9s %10" PRIu32 " %10" PRIu32 " %08" PRIx32 "  ",
                      methodWord(entry.method).c_str(), entry.compressedSize, entry.uncompressedSize, entry.crc);
        std::cout << line << DisplayText::visible(entry.name) << (entry.isLink() ? " (link)" : "") << "\n";
        std::optional<ZipError> refusal;
        if (entry.isEncrypted())
            refusal = ZipError::encrypted(entry.name);
        else if (!ZipNames::safeComponents(entry.name))
            refusal = ZipError::unsafePath(entry.name);
        else if ((entry.method & ~8) != 0)
            refusal = ZipError::unsupportedMethod(entry.name, entry.method);
        else if (entry.overlapping)
            refusal = ZipError::corrupt(entry.name);
        if (refusal) {
            std::cerr << refusal->errorDescription() << "\n";
            refused = true;
        }
    }
    return refused ? exitFailure : exitSuccess;
}

} // namespace
} // namespace orbisk::cli
