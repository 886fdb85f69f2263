// The window's commands: menus, their keys from the shortcut catalog, and the function-key bar.
#include "AppSettings.h"
#include "commands/FileCommands.h"
#include "files/PatternPrompt.h"
#include "operations/FileUndoCenter.h"
#include "panes/PaneViewController.h"
#include "places/Favorites.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "support/Paths.h"
#include "text/TextWindows.h"
#include "tools/BreakdownView.h"
#include "windows/CommandKeys.h"
#include "windows/FileListView.h"
#include "windows/FunctionKeyBar.h"
#include "windows/MainWindow.h"
#include "windows/PaneWidget.h"
#include "windows/SettingsDialog.h"
#include "windows/ShortcutsDialog.h"
#include "windows/Sidebar.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTreeWidget>

namespace orbisk {
namespace {

using C = ShortcutCommand;

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

QAction* MainWindow::addCommand(QMenu* menu, ShortcutCommand identifier, const std::string& title)
{
    auto* action = new QAction(qtext(title), this);
    action->setShortcuts(CommandKeys::keys(identifier));
    action->setShortcutContext(Qt::WindowShortcut);
    menu->addAction(action);
    commands_[identifier] = action;
    return action;
}

QAction* MainWindow::addLaterCommand(QMenu* menu, ShortcutCommand identifier, const std::string& title)
{
    // Commands whose features are not in this build yet: listed with their keys, never active.
    auto* action = addCommand(menu, identifier, title);
    action->setEnabled(false);
    return action;
}

QAction* MainWindow::command(ShortcutCommand identifier) const
{
    const auto found = commands_.find(identifier);
    return found == commands_.end() ? nullptr : found->second;
}

void MainWindow::buildCommands()
{
    auto* file = menuBar()->addMenu(qtext(translate("Orbisk", "&File")));
    connect(addCommand(file, C::openItem, translate("Orbisk", "Open")), &QAction::triggered, this,
            [this] { activePane().openFocused(); });
    connect(addCommand(file, C::newTab, translate("Orbisk", "New Tab")), &QAction::triggered, this,
            [this] { activePane().newTab(); });
    connect(addCommand(file, C::closeTab, translate("Orbisk", "Close Tab")), &QAction::triggered, this,
            [this] { activePane().closeTab(activePane().activeTabIndex()); });
    file->addSeparator();
    connect(addCommand(file, C::viewFile, translate("Orbisk", "View File")), &QAction::triggered, this, [this] {
        if (const auto path = focusedFile(false))
            texts_->view(*path);
    });
    connect(addCommand(file, C::editFile, translate("Orbisk", "Edit File")), &QAction::triggered, this, [this] {
        if (const auto path = focusedFile(false))
            texts_->edit(*path);
    });
    connect(addCommand(file, C::copyToOtherPane, translate("Orbisk", "Copy to Other Pane…")), &QAction::triggered, this,
            [this] { files_->copyToOtherPane(); });
    connect(addCommand(file, C::moveToOtherPane, translate("Orbisk", "Move to Other Pane…")), &QAction::triggered, this,
            [this] { files_->moveToOtherPane(); });
    connect(addCommand(file, C::renameInPlace, translate("Orbisk", "Rename…")), &QAction::triggered, this,
            [this] { files_->renameInPlace(); });
    connect(addCommand(file, C::newFolder, translate("Orbisk", "New Folder…")), &QAction::triggered, this,
            [this] { files_->newFolder(); });
    connect(addCommand(file, C::newFolderWithSelection, translate("Orbisk", "New Folder with Selection…")),
            &QAction::triggered, this, [this] { files_->newFolderWithSelection(); });
    connect(addCommand(file, C::newTextFile, translate("Orbisk", "New Text File…")), &QAction::triggered, this,
            [this] { files_->newTextFile(); });
    connect(addCommand(file, C::duplicate, translate("Orbisk", "Duplicate")), &QAction::triggered, this,
            [this] { files_->duplicate(activePane()); });
    connect(addCommand(file, C::moveToTrash, translate("Orbisk", "Move to Trash…")), &QAction::triggered, this,
            [this] { files_->moveToTrash(); });
    connect(addCommand(file, C::compressToOtherPane, translate("Orbisk", "Compress to ZIP…")), &QAction::triggered,
            this, [this] { files_->compressToOtherPane(); });
    connect(addCommand(file, C::extractToOtherPane, translate("Orbisk", "Extract ZIP")), &QAction::triggered, this,
            [this] { files_->extractToOtherPane(); });
    connect(addCommand(file, C::quickPreview, translate("Orbisk", "Quick Preview")), &QAction::triggered, this, [this] {
        if (const auto path = focusedFile(true))
            texts_->togglePreview(*path);
    });
    addLaterCommand(file, C::revealInFileManager, translate("Orbisk", "Show in File Manager"));
    file->addSeparator();
    connect(addCommand(file, C::closeWindow, translate("Orbisk", "Close Window")), &QAction::triggered, this,
            &QWidget::close);
    connect(addCommand(file, C::quit, translate("Orbisk", "Quit")), &QAction::triggered, this, &QWidget::close);

    auto* edit = menuBar()->addMenu(qtext(translate("Orbisk", "&Edit")));
    // The file history's own actions. A focused text field takes Ctrl+Z and Ctrl+Shift+Z for its
    // own undo first (it claims standard editing keys before window shortcuts), so typing and file
    // operations never share steps.
    connect(addCommand(edit, C::undo, translate("Orbisk", "Undo")), &QAction::triggered, this,
            [this] { undo_->undo(); });
    connect(addCommand(edit, C::redo, translate("Orbisk", "Redo")), &QAction::triggered, this,
            [this] { undo_->redo(); });
    edit->addSeparator();
    connect(addCommand(edit, C::copyFiles, translate("Orbisk", "Copy Files")), &QAction::triggered, this,
            [this] { files_->copyFiles(); });
    connect(addCommand(edit, C::pasteFiles, translate("Orbisk", "Paste Files")), &QAction::triggered, this,
            [this] { files_->pasteFiles(false); });
    connect(addCommand(edit, C::moveCopiedFilesHere, translate("Orbisk", "Move Copied Files Here")),
            &QAction::triggered, this, [this] { files_->pasteFiles(true); });
    connect(addCommand(edit, C::copyNames, translate("Orbisk", "Copy Names as Text")), &QAction::triggered, this,
            [this] {
                QStringList names;
                for (const auto& item : activePane().selectedItems())
                    names << QString::fromStdString(DisplayText::visible(item.name()));
                QApplication::clipboard()->setText(names.join(QLatin1Char('\n')));
            });
    connect(addCommand(edit, C::copyPaths, translate("Orbisk", "Copy Paths as Text")), &QAction::triggered, this,
            [this] {
                QStringList paths;
                for (const auto& item : activePane().selectedItems())
                    paths << QString::fromStdString(DisplayText::visible(item.url().native()));
                QApplication::clipboard()->setText(paths.join(QLatin1Char('\n')));
            });
    edit->addSeparator();
    connect(addCommand(edit, C::selectAll, translate("Orbisk", "Select All")), &QAction::triggered, this,
            [this] { activePane().selectAll(); });
    connect(addCommand(edit, C::deselectAll, translate("Orbisk", "Deselect All")), &QAction::triggered, this,
            [this] { activePane().deselectAll(); });
    connect(addCommand(edit, C::invertSelection, translate("Orbisk", "Invert Selection")), &QAction::triggered, this,
            [this] { activePane().invertSelection(); });
    connect(addCommand(edit, C::selectByPattern, translate("Orbisk", "Select by Pattern…")), &QAction::triggered, this,
            [this] { promptPattern(true); });
    connect(addCommand(edit, C::deselectByPattern, translate("Orbisk", "Deselect by Pattern…")), &QAction::triggered,
            this, [this] { promptPattern(false); });
    edit->addSeparator();
    connect(addCommand(edit, C::filter, translate("Orbisk", "Filter")), &QAction::triggered, this,
            [this] { paneWidget(active_).focusFilter(); });

    auto* view = menuBar()->addMenu(qtext(translate("Orbisk", "&View")));
    auto* hidden = addCommand(view, C::toggleHiddenFiles, translate("Orbisk", "Show Hidden Files"));
    hidden->setCheckable(true);
    connect(hidden, &QAction::triggered, this, [this](bool on) { settings_.setShowHiddenFiles(on); });
    const std::pair<ShortcutCommand, SortColumn> sorts[] = {{C::sortByName, SortColumn::name},
                                                            {C::sortBySize, SortColumn::size},
                                                            {C::sortByDate, SortColumn::date},
                                                            {C::sortByKind, SortColumn::kind}};
    const std::string sortTitles[] = {translate("Orbisk", "Sort by Name"), translate("Orbisk", "Sort by Size"),
                                      translate("Orbisk", "Sort by Date Modified"),
                                      translate("Orbisk", "Sort by Kind")};
    for (std::size_t i = 0; i < std::size(sorts); ++i) {
        const auto column = sorts[i].second;
        connect(addCommand(view, sorts[i].first, sortTitles[i]), &QAction::triggered, this,
                [this, column] { activePane().sortBy(column); });
    }
    view->addSeparator();
    connect(addCommand(view, C::refresh, translate("Orbisk", "Refresh")), &QAction::triggered, this,
            [this] { activePane().reload(); });
    auto* sidebar = addCommand(view, C::toggleSidebar, translate("Orbisk", "Show Sidebar"));
    sidebar->setCheckable(true);
    sidebar->setChecked(true);
    connect(sidebar, &QAction::toggled, sidebar_, &QWidget::setVisible);
    // Named after what it will do, as the shortcut document refers to "View › Hide Function Key Bar".
    functionKeyBarToggle_ = view->addAction(QString());
    connect(functionKeyBarToggle_, &QAction::triggered, this,
            [this] { settings_.setShowFunctionKeyBar(!settings_.showFunctionKeyBar()); });
    connect(addCommand(view, C::toggleFullScreen, translate("Orbisk", "Full Screen")), &QAction::triggered, this,
            [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });

    auto* go = menuBar()->addMenu(qtext(translate("Orbisk", "&Go")));
    connect(addCommand(go, C::back, translate("Orbisk", "Back")), &QAction::triggered, this,
            [this] { activePane().goBack(); });
    connect(addCommand(go, C::forward, translate("Orbisk", "Forward")), &QAction::triggered, this,
            [this] { activePane().goForward(); });
    connect(addCommand(go, C::enclosingFolder, translate("Orbisk", "Enclosing Folder")), &QAction::triggered, this,
            [this] { activePane().goUp(); });
    go->addSeparator();
    const std::pair<ShortcutCommand, std::filesystem::path> places[] = {
        {C::goHome, Paths::home()},
        {C::goDesktop, Sidebar::userFolder(QStandardPaths::DesktopLocation)},
        {C::goDocuments, Sidebar::userFolder(QStandardPaths::DocumentsLocation)},
        {C::goDownloads, Sidebar::userFolder(QStandardPaths::DownloadLocation)}};
    const std::string placeTitles[] = {translate("Orbisk", "Home"), translate("Orbisk", "Desktop"),
                                       translate("Orbisk", "Documents"), translate("Orbisk", "Downloads")};
    for (std::size_t i = 0; i < std::size(places); ++i) {
        const auto folder = places[i].second;
        auto* action = addCommand(go, places[i].first, placeTitles[i]);
        action->setEnabled(!folder.empty());
        connect(action, &QAction::triggered, this, [this, folder] { activePane().navigate(folder); });
    }
    connect(addCommand(go, C::goToFolder, translate("Orbisk", "Go to Folder…")), &QAction::triggered, this,
            &MainWindow::goToFolder);
    go->addSeparator();
    connect(addCommand(go, C::addFavorite, translate("Orbisk", "Add to Favorites")), &QAction::triggered, this, [this] {
        settings_.setFavoriteLocations(Favorites::added(settings_.favoriteLocations(), activePane().directory()));
    });
    auto* favorites = go->addMenu(qtext(translate("Orbisk", "Favorites")));
    for (std::size_t number = 0; number < 9; ++number) {
        const auto identifier =
            static_cast<ShortcutCommand>(static_cast<int>(ShortcutCommand::goToFavorite1) + static_cast<int>(number));
        connect(addCommand(favorites, identifier, L(translate("Orbisk", "Favorite %lld"), number + 1)),
                &QAction::triggered, this, [this, number] { goToFavorite(number); });
    }

    auto* commands = menuBar()->addMenu(qtext(translate("Orbisk", "&Commands")));
    connect(addCommand(commands, C::switchPane, translate("Orbisk", "Switch Pane")), &QAction::triggered, this, [this] {
        if (breakdown_ && breakdownSide_ == otherSide()) {
            // The breakdown stands in for the other pane: the keyboard goes there and back.
            auto* target = breakdown_->list()->hasFocus() ? static_cast<QWidget*>(paneWidget(active_).list())
                                                          : static_cast<QWidget*>(breakdown_->list());
            target->setFocus(Qt::TabFocusReason);
            return;
        }
        setActiveSide(otherSide());
        paneWidget(active_).list()->setFocus(Qt::TabFocusReason);
    });
    connect(addCommand(commands, C::swapPanes, translate("Orbisk", "Swap Panes")), &QAction::triggered, this,
            [this] { activePane().swapLocations(pane(otherSide())); });
    connect(addCommand(commands, C::sameFolderInOtherPane, translate("Orbisk", "Same Folder in Other Pane")),
            &QAction::triggered, this, [this] { pane(otherSide()).navigate(activePane().directory()); });
    connect(addCommand(commands, C::nextTab, translate("Orbisk", "Next Tab")), &QAction::triggered, this,
            [this] { activePane().selectAdjacentTab(1); });
    connect(addCommand(commands, C::previousTab, translate("Orbisk", "Previous Tab")), &QAction::triggered, this,
            [this] { activePane().selectAdjacentTab(-1); });
    connect(addCommand(commands, C::focusSidebar, translate("Orbisk", "Move Keyboard to Sidebar")), &QAction::triggered,
            this, [this] { sidebar_->setFocus(Qt::ShortcutFocusReason); });
    commands->addSeparator();
    addLaterCommand(commands, C::ask, translate("Orbisk", "Ask…"));
    addLaterCommand(commands, C::batchRename, translate("Orbisk", "Batch Rename…"));
    addLaterCommand(commands, C::syncFolders, translate("Orbisk", "Sync Folders…"));
    buildToolCommands(commands, edit);

    auto* window = menuBar()->addMenu(qtext(translate("Orbisk", "&Window")));
    connect(addCommand(window, C::showSettings, translate("Orbisk", "Settings…")), &QAction::triggered, this,
            &MainWindow::showSettings);
    connect(window->addAction(qtext(translate("Orbisk", "Minimize"))), &QAction::triggered, this,
            &QWidget::showMinimized);
    connect(addCommand(window, C::showMainWindow, translate("Orbisk", "Main Window")), &QAction::triggered, this,
            [this] {
                showNormal();
                raise();
                activateWindow();
            });

    auto* help = menuBar()->addMenu(qtext(translate("Orbisk", "&Help")));
    connect(addCommand(help, C::showShortcuts, translate("Orbisk", "Keyboard Shortcuts")), &QAction::triggered, this,
            &MainWindow::showShortcuts);
}

void MainWindow::buildFunctionKeys()
{
    const std::tuple<const char*, std::string, ShortcutCommand> keys[] = {
        {"F1", translate("Orbisk", "Help"), C::showShortcuts},
        {"F3", translate("Orbisk", "View||function key"), C::viewFile},
        {"F4", translate("Orbisk", "Edit||function key"), C::editFile},
        {"F5", translate("Orbisk", "Copy"), C::copyToOtherPane},
        {"F6", translate("Orbisk", "Move"), C::moveToOtherPane},
        {"F7", translate("Orbisk", "New Folder"), C::newFolder},
        {"F8", translate("Orbisk", "Trash"), C::moveToTrash},
        {"F10", translate("Orbisk", "Quit"), C::quit}};
    for (const auto& [key, label, identifier] : keys)
        keyBar_->addKey(QString::fromLatin1(key), qtext(label), command(identifier));
}

void MainWindow::updateCommands()
{
    if (commands_.empty())
        return;
    const auto& pane = activePane();
    command(C::back)->setEnabled(pane.canGoBack());
    command(C::forward)->setEnabled(pane.canGoForward());
    command(C::enclosingFolder)->setEnabled(pane.canGoUp());
    command(C::closeTab)->setEnabled(pane.tabs().size() > 1);
    const bool selection = files_->hasSelection();
    for (const auto identifier : {C::copyToOtherPane, C::moveToOtherPane, C::newFolderWithSelection, C::duplicate,
                                  C::moveToTrash, C::copyFiles})
        command(identifier)->setEnabled(selection);
    const auto focused = pane.focusedItem();
    command(C::renameInPlace)->setEnabled(focused && !focused->isParentLink);
    command(C::viewFile)->setEnabled(focusedFile(false).has_value());
    command(C::editFile)->setEnabled(focusedFile(false).has_value());
    command(C::quickPreview)->setEnabled(focusedFile(true).has_value() || texts_->previewShown());
    command(C::compressToOtherPane)->setEnabled(selection || (focused && !focused->isParentLink));
    command(C::extractToOtherPane)->setEnabled(focused && !focused->isParentLink && !focused->isDirectory);
    command(C::toggleHiddenFiles)->setChecked(settings_.showHiddenFiles());
    functionKeyBarToggle_->setText(qtext(settings_.showFunctionKeyBar()
                                             ? translate("Orbisk", "Hide Function Key Bar")
                                             : translate("Orbisk", "Show Function Key Bar")));
}

void MainWindow::updateUndoCommands()
{
    if (commands_.empty())
        return;
    // A name may hold "&", which a menu would read as a mnemonic.
    const auto menuText = [](const std::string& text) {
        return qtext(text).replace(QLatin1Char('&'), QStringLiteral("&&"));
    };
    command(C::undo)->setText(menuText(undo_->undoText()));
    command(C::undo)->setEnabled(undo_->canUndo());
    command(C::redo)->setText(menuText(undo_->redoText()));
    command(C::redo)->setEnabled(undo_->canRedo());
}

std::optional<std::filesystem::path> MainWindow::focusedFile(bool foldersToo) const
{
    const auto focused = activePane().focusedItem();
    if (!focused || focused->isParentLink || (focused->isDirectory && !foldersToo))
        return std::nullopt;
    return focused->url();
}

void MainWindow::followWithPreview()
{
    if (const auto path = focusedFile(true); path && texts_->previewShown())
        texts_->follow(*path);
}

void MainWindow::goToFolder()
{
    auto* dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(qtext(translate("Orbisk", "Go to Folder")));
    dialog->setLabelText(qtext(translate("Orbisk", "Folder (absolute, ~ or relative path):")));
    dialog->setOkButtonText(qtext(translate("Orbisk", "Go")));
    connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& text) {
        auto& pane = activePane();
        const auto typed = text.toStdString();
        const auto folder = Paths::expandTypedPath(typed, pane.directory());
        if (!Paths::isExistingFolder(folder)) {
            auto* message = new QMessageBox(
                QMessageBox::Warning, qtext(translate("Orbisk", "Go to Folder")),
                qtext(L(translate("Orbisk", "There is no folder at “%@”."), folder.native())), QMessageBox::Ok, this);
            message->setAttribute(Qt::WA_DeleteOnClose);
            message->open();
            return;
        }
        pane.navigate(folder);
    });
    dialog->open();
}

void MainWindow::promptPattern(bool select)
{
    const auto texts = select ? PatternPrompt::select() : PatternPrompt::deselect();
    auto* dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(qtext(texts.title));
    dialog->setLabelText(qtext(texts.message));
    dialog->setOkButtonText(qtext(texts.confirmButton));
    dialog->setCancelButtonText(qtext(texts.cancelButton));
    connect(dialog, &QInputDialog::textValueSelected, this,
            [this, select](const QString& text) { activePane().selectMatching(text.toStdString(), select); });
    dialog->open();
}

void MainWindow::showShortcuts()
{
    auto* dialog = findChild<ShortcutsDialog*>();
    if (!dialog)
        dialog = new ShortcutsDialog(this);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void MainWindow::showSettings()
{
    auto* dialog = findChild<SettingsDialog*>();
    if (!dialog)
        dialog = new SettingsDialog(settings_, this);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace orbisk
