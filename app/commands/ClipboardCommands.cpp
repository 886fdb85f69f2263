// Files on the clipboard (Copy, Paste, Move Here) and files dropped on a pane.
#include "commands/FileCommands.h"

#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/Paths.h"
#include "windows/MainWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>

#include <algorithm>

namespace orbisk {
namespace {

/// The offered paths without those a transfer into folder must not take: the folder itself and
/// anything already directly in it (a drop back where the items came from does nothing).
std::vector<std::filesystem::path> worthTransferring(const std::vector<std::filesystem::path>& paths,
                                                     const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> kept;
    for (const auto& path : paths) {
        if (path == folder || Paths::parentFolder(path) == folder)
            continue;
        kept.push_back(path);
    }
    return kept;
}

} // namespace

void FileCommands::copyFiles()
{
    std::vector<std::filesystem::path> paths;
    for (const auto& item : window_.activePane().selectedItems())
        paths.push_back(item.url());
    if (paths.empty())
        return;
    QApplication::clipboard()->setMimeData(FileMimeData::make(paths, false));
}

void FileCommands::pasteFiles(bool move)
{
    const auto offer = FileMimeData::read(QApplication::clipboard()->mimeData());
    if (!offer)
        return;
    const bool moving = move || offer->cut;
    TransferRequest request;
    request.kind = moving ? TransferEngine::Kind::move : TransferEngine::Kind::copy;
    request.sources = offer->paths;
    request.into = window_.activePane().directory();
    const bool wasCut = offer->cut;
    window_.operations().transfer(std::move(request), &window_, [this, wasCut](const OperationReport& report) {
        // Cut files are pasted once, as in other file managers; afterwards they are where they went.
        if (wasCut && !report.completed.empty())
            QApplication::clipboard()->clear();
        finished(report);
    });
}

void FileCommands::drop(const FileOffer& offer, const std::filesystem::path& folder, Qt::DropAction action)
{
    auto sources = worthTransferring(offer.paths, folder);
    if (sources.empty())
        return;
    TransferRequest request;
    request.kind = action == Qt::MoveAction ? TransferEngine::Kind::move : TransferEngine::Kind::copy;
    request.sources = std::move(sources);
    request.into = folder;
    window_.operations().transfer(std::move(request), &window_,
                                  [this](const OperationReport& report) { finished(report); });
}

} // namespace orbisk
