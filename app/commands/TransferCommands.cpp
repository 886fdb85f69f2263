// Copy and move to the other pane (F5, F6) through the destination dialog, and Duplicate.
#include "commands/FileCommands.h"

#include "AppSettings.h"
#include "dialogs/TransferDialog.h"
#include "operations/ItemActions.h"
#include "operations/OperationRunner.h"
#include "operations/RenameMask.h"
#include "operations/TransferTarget.h"
#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/MainWindow.h"

namespace orbisk {
namespace {

std::vector<std::filesystem::path> urls(const std::vector<FileItem>& items)
{
    std::vector<std::filesystem::path> paths;
    paths.reserve(items.size());
    for (const auto& item : items)
        paths.push_back(item.url());
    return paths;
}

} // namespace

TransferDialog* FileCommands::copyToOtherPane()
{
    return askTransfer(false);
}

TransferDialog* FileCommands::moveToOtherPane()
{
    return askTransfer(true);
}

TransferDialog* FileCommands::askTransfer(bool move)
{
    auto& source = window_.activePane();
    const auto sources = urls(source.selectedItems());
    if (sources.empty())
        return nullptr;
    const auto other = window_.activeSide() == Side::left ? Side::right : Side::left;
    auto* dialog = new TransferDialog(move ? TransferDialog::Kind::move : TransferDialog::Kind::copy, sources,
                                      window_.pane(other).directory(), settings_.transferConflictPolicy(), &window_);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const auto base = source.directory();
    connect(dialog, &QDialog::accepted, this, [this, dialog, move, sources, base] {
        settings_.setTransferConflictPolicy(dialog->policy());
        transferTyped(move, sources, dialog->destinationText(), base);
    });
    dialog->open();
    return dialog;
}

void FileCommands::transferTyped(bool move, const std::vector<std::filesystem::path>& sources, const std::string& typed,
                                 const std::filesystem::path& base)
{
    // Reading the text takes status queries only; nothing is created for a destination.
    const auto target = TransferTargetResolver::resolve(typed, base, sources.size(), Paths::home());
    if (!target) {
        warn(translate("Orbisk", "Invalid destination."), target.error().errorDescription());
        return;
    }

    TransferRequest request;
    request.kind = move ? TransferEngine::Kind::move : TransferEngine::Kind::copy;
    request.sources = sources;
    request.conflictPolicy = settings_.transferConflictPolicy();
    if (const auto* into = std::get_if<TransferTarget::Into>(&target->value)) {
        request.into = into->folder;
    } else if (const auto* renamed = std::get_if<TransferTarget::Renamed>(&target->value)) {
        request.into = renamed->folder;
        request.names[sources.front()] = renamed->name;
    } else {
        const auto& masked = std::get<TransferTarget::Masked>(target->value);
        std::vector<std::string> names;
        for (const auto& source : sources)
            names.push_back(source.filename().native());
        const auto newNames = RenameMask::apply(masked.mask, names);
        if (!newNames) {
            warn(translate("Orbisk", "Invalid destination."), newNames.error().errorDescription());
            return;
        }
        request.into = masked.folder;
        for (std::size_t i = 0; i < sources.size(); ++i)
            request.names[sources[i]] = (*newNames)[i];
    }
    window_.operations().transfer(std::move(request), &window_,
                                  [this](const OperationReport& report) { finished(report); });
}

void FileCommands::duplicate(PaneViewController& pane)
{
    const auto sources = urls(pane.selectedItems());
    if (sources.empty())
        return;
    TransferRequest request;
    request.kind = TransferEngine::Kind::copy;
    request.sources = sources;
    request.into = pane.directory();
    // Each name is free when asked; should another program take one meanwhile, the engine's clash
    // rules apply rather than anything being overwritten.
    for (const auto& source : sources)
        request.names[source] = ItemActions::duplicateName(source);
    request.undoName = sources.size() == 1
                           ? L(translate("Orbisk", "Duplicate “%@”"), sources.front().filename().native())
                           : L(translate("Orbisk", "Duplicate %lld Items"), static_cast<long long>(sources.size()));
    window_.operations().transfer(std::move(request), &window_,
                                  [this](const OperationReport& report) { finished(report); });
}

} // namespace orbisk
