// The window's folder tools: folder sizes in the Size column, the folder breakdown in place of
// the other pane, and the Find window.
#include "AppSettings.h"
#include "panes/PaneViewController.h"
#include "support/Paths.h"
#include "support/Translate.h"
#include "tools/BreakdownView.h"
#include "tools/FindWindow.h"
#include "tools/FolderSizeJobs.h"
#include "windows/FileListView.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QSplitter>
#include <QTimer>
#include <QTreeWidget>

namespace orbisk {
namespace {

using C = ShortcutCommand;

/// The folder a tool takes from a pane: the folder under the cursor, ".." for the enclosing
/// folder, or the pane's own folder when the cursor is on a file.
std::filesystem::path folderUnderCursor(const PaneViewController& pane)
{
    const auto focused = pane.focusedItem();
    if (!focused)
        return pane.directory();
    if (focused->isParentLink)
        return Paths::parentFolder(pane.directory());
    return focused->isDirectory ? focused->url() : pane.directory();
}

} // namespace

void MainWindow::buildToolCommands(QMenu* commands, QMenu* edit)
{
    sizeJobs_ = new FolderSizeJobs(this);
    connect(addCommand(commands, C::calculateFolderSizes, translate("Orbisk", "Calculate Folder Sizes")),
            &QAction::triggered, this, &MainWindow::calculateFolderSizes);
    connect(addCommand(commands, C::toggleBreakdown, translate("Orbisk", "Folder Breakdown")), &QAction::triggered,
            this, &MainWindow::toggleBreakdown);
    auto* follows = commands->addAction(QString::fromStdString(translate("Orbisk", "Breakdown Follows Cursor")));
    follows->setCheckable(true);
    follows->setChecked(settings_.breakdownFollowsCursor());
    connect(follows, &QAction::toggled, this, [this](bool on) { settings_.setBreakdownFollowsCursor(on); });
    connect(&settings_, &AppSettings::changed, follows,
            [this, follows] { follows->setChecked(settings_.breakdownFollowsCursor()); });
    connect(addCommand(edit, C::findFiles, translate("Orbisk", "Find Files…")), &QAction::triggered, this,
            &MainWindow::findFiles);

    // Arrowing through a pane would start a measurement per row; wait until the cursor rests.
    breakdownFollow_ = new QTimer(this);
    breakdownFollow_->setSingleShot(true);
    breakdownFollow_->setInterval(150);
    connect(breakdownFollow_, &QTimer::timeout, this, [this] {
        if (breakdown_ && settings_.breakdownFollowsCursor() && breakdownSide_ != active_)
            breakdown_->showFolder(folderUnderCursor(activePane()));
    });
    for (auto* pane : panes_)
        connect(pane, &PaneViewController::statusChanged, this, &MainWindow::followCursorInBreakdown);
}

void MainWindow::calculateFolderSizes()
{
    auto& pane = activePane();
    auto items = pane.selectedItems();
    if (items.empty()) {
        if (const auto focused = pane.focusedItem(); focused && !focused->isParentLink)
            items.push_back(*focused);
    }
    sizeJobs_->measure(pane, items);
}

void MainWindow::toggleBreakdown()
{
    if (breakdown_) {
        closeBreakdown();
        return;
    }
    breakdownSide_ = otherSide();
    auto* covered = &paneWidget(breakdownSide_);
    breakdown_ = new BreakdownView;
    divider_->insertWidget(divider_->indexOf(covered), breakdown_);
    covered->hide();
    connect(breakdown_, &BreakdownView::closeRequested, this, &MainWindow::closeBreakdown);
    breakdown_->showFolder(folderUnderCursor(activePane()));
}

void MainWindow::closeBreakdown()
{
    if (!breakdown_)
        return;
    const bool hadFocus = breakdown_->list()->hasFocus();
    // Esc reaches here from inside the view's own key handling, so it goes once that is over;
    // its worker is told to stop now and joined when the view is deleted.
    auto* closing = std::exchange(breakdown_, nullptr);
    closing->stopMeasuring();
    closing->hide();
    closing->deleteLater();
    paneWidget(breakdownSide_).show();
    if (hadFocus)
        paneWidget(active_).list()->setFocus(Qt::OtherFocusReason);
}

void MainWindow::followCursorInBreakdown()
{
    if (breakdown_ && settings_.breakdownFollowsCursor() && sender() == &activePane() && breakdownSide_ != active_)
        breakdownFollow_->start();
}

void MainWindow::findFiles()
{
    auto* window = new FindWindow(activePane().directory(), this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &FindWindow::showRequested, this, [this](const std::filesystem::path& item) {
        activePane().navigate(Paths::parentFolder(item), item.filename().native());
        raise();
        activateWindow();
        paneWidget(active_).list()->setFocus(Qt::OtherFocusReason);
    });
    window->show();
    window->patternField()->setFocus(Qt::OtherFocusReason);
}

} // namespace orbisk
