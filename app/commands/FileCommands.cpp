#include "commands/FileCommands.h"

#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QMessageBox>

namespace orbisk {

FileCommands::FileCommands(MainWindow& window, AppSettings& settings)
    : QObject(&window), window_(window), settings_(settings)
{
    for (const Side side : {Side::left, Side::right})
        wirePane(window_.pane(side), *window_.paneWidget(side).list());
}

void FileCommands::wirePane(PaneViewController& pane, FileListView& list)
{
    list.dragSources = [&pane] {
        std::vector<std::filesystem::path> paths;
        for (const auto& item : pane.selectedItems())
            paths.push_back(item.url());
        return paths;
    };
    list.dropFolder = [&pane](int row) -> std::optional<std::filesystem::path> {
        const auto& rows = pane.rows();
        if (row >= 0 && static_cast<std::size_t>(row) < rows.size() && rows[static_cast<std::size_t>(row)].isDirectory)
            return rows[static_cast<std::size_t>(row)].isParentLink ? Paths::parentFolder(pane.directory())
                                                                    : rows[static_cast<std::size_t>(row)].url();
        if (!pane.activeTab().hasLoaded)
            return std::nullopt;
        return pane.directory();
    };
    list.onDrop = [this](const FileOffer& offer, const std::filesystem::path& folder, Qt::DropAction action) {
        drop(offer, folder, action);
    };
}

bool FileCommands::hasSelection() const
{
    return !window_.activePane().selectedItems().empty();
}

void FileCommands::warn(const std::string& message, const std::string& detail)
{
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Orbisk"), QString::fromStdString(message),
                                QMessageBox::Ok, &window_);
    box->setInformativeText(QString::fromStdString(detail));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void FileCommands::finished(const OperationReport& report)
{
    window_.showResults(report);
}

} // namespace orbisk
