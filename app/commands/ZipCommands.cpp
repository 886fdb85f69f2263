// Shift+F9 compresses into the other pane, Ctrl+Shift+F9 extracts into it.
#include "commands/FileCommands.h"

#include "dialogs/NamePrompt.h"
#include "operations/ItemActions.h"
#include "operations/NameGenerator.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/MainWindow.h"
#include "zip/ZipReader.h"
#include "zip/ZipWriter.h"

namespace orbisk {
namespace {

// The selection, or the item under the cursor when nothing is selected.
std::vector<FileItem> chosenItems(const PaneViewController& pane)
{
    auto items = pane.selectedItems();
    if (items.empty()) {
        if (auto focused = pane.focusedItem(); focused && !focused->isParentLink)
            items.push_back(*focused);
    }
    return items;
}

// The folder of the pane that is not active: where both commands put their result.
std::filesystem::path otherFolder(const MainWindow& window)
{
    return window.pane(window.activeSide() == Side::left ? Side::right : Side::left).directory();
}

} // namespace

std::string FileCommands::proposedArchiveName(const std::vector<FileItem>& items, const std::filesystem::path& from,
                                              const std::filesystem::path& into)
{
    std::string base = items.size() == 1 ? items.front().name() : from.filename().native();
    if (base.empty())
        base = translate("Orbisk", "Archive");
    const std::string proposal = base + ".zip";
    const auto taken = NameGenerator::existsChecker(into);
    return taken(proposal) ? NameGenerator::keepBothName(proposal, false, taken) : proposal;
}

NamePrompt* FileCommands::compressToOtherPane()
{
    const auto& pane = window_.activePane();
    const auto items = chosenItems(pane);
    if (items.empty())
        return nullptr;
    std::vector<std::filesystem::path> sources;
    for (const auto& item : items)
        sources.push_back(item.url());
    const auto into = otherFolder(window_);
    const auto message = items.size() == 1 ? L(translate("Orbisk", "Compress “%@” into a ZIP archive in:\n%@"),
                                               items.front().name(), into.native())
                                           : L(translate("Orbisk", "Compress %lld items into a ZIP archive in:\n%@"),
                                               static_cast<long long>(items.size()), into.native());
    auto* prompt =
        new NamePrompt(translate("Orbisk", "Compress"), message, proposedArchiveName(items, pane.directory(), into),
                       translate("Orbisk", "Compress"), true, &window_);
    prompt->setAttribute(Qt::WA_DeleteOnClose);
    connect(prompt, &QDialog::accepted, this, [this, prompt, sources, into] {
        const auto name = prompt->name();
        if (auto valid = ItemActions::validateName(name); !valid) {
            warn(translate("Orbisk", "The archive couldn’t be created."), valid.error().errorDescription());
            return;
        }
        const auto archive = into / name;
        auto work = [sources, archive](OperationContext& context) {
            return ZipWriter::compress(sources, archive, context.token, context.progress);
        };
        RunOptions options;
        options.undoName = sources.size() == 1
                               ? L(translate("Orbisk", "Compress “%@”"), sources.front().filename().native())
                               : L(translate("Orbisk", "Compress %lld items"), static_cast<long long>(sources.size()));
        window_.operations().run(
            L(translate("Orbisk", "Compressing into “%@”"), name), translate("Orbisk", "Compress"),
            L(translate("Orbisk", "To: %@"), into.native()), &window_, std::move(work),
            [this](const OperationReport& report) { finished(report); }, std::move(options));
    });
    prompt->open();
    return prompt;
}

bool FileCommands::extractToOtherPane()
{
    const auto focused = window_.activePane().focusedItem();
    if (!focused || focused->isParentLink || focused->isDirectory)
        return false;
    const auto archive = focused->url();
    const auto into = otherFolder(window_);
    auto work = [archive, into](OperationContext& context) {
        return ZipReader::extract(archive, into, context.token, context.progress);
    };
    RunOptions options;
    options.undoName = L(translate("Orbisk", "Extract “%@”"), focused->name());
    window_.operations().run(
        L(translate("Orbisk", "Extracting “%@”"), focused->name()), translate("Orbisk", "Extract"),
        L(translate("Orbisk", "To: %@"), into.native()), &window_, std::move(work),
        [this](const OperationReport& report) { finished(report); }, std::move(options));
    return true;
}

} // namespace orbisk
