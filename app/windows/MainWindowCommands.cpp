// The window's commands: menus, their keys from the shortcut catalog, and the function-key bar.
#include "AppSettings.h"
#include "files/PatternPrompt.h"
#include "panes/PaneViewController.h"
#include "places/Favorites.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "support/Paths.h"
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

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

QAction* MainWindow::addCommand(QMenu* menu, std::string_view identifier, const std::string& title)
{
    auto* action = new QAction(qtext(title), this);
    action->setShortcuts(CommandKeys::keys(identifier));
    action->setShortcutContext(Qt::WindowShortcut);
    menu->addAction(action);
    commands_.emplace_back(std::string(identifier), action);
    return action;
}

QAction* MainWindow::addLaterCommand(QMenu* menu, std::string_view identifier, const std::string& title)
{
    // Commands whose features are not in this build yet: listed with their keys, never active.
    auto* action = addCommand(menu, identifier, title);
    action->setEnabled(false);
    action->setProperty("orbiskLater", true);
    return action;
}

QAction* MainWindow::command(std::string_view identifier) const
{
    for (const auto& [name, action] : commands_) {
        if (name == identifier)
            return action;
    }
    return nullptr;
}

void MainWindow::buildCommands()
{
    auto* file = menuBar()->addMenu(qtext(translate("Orbisk", "&File")));
    connect(addCommand(file, "open", translate("Orbisk", "Open")), &QAction::triggered, this,
            [this] { activePane().openFocused(); });
    connect(addCommand(file, "newTab", translate("Orbisk", "New Tab")), &QAction::triggered, this,
            [this] { activePane().newTab(); });
    connect(addCommand(file, "closeTab", translate("Orbisk", "Close Tab")), &QAction::triggered, this,
            [this] { activePane().closeTab(activePane().activeTabIndex()); });
    file->addSeparator();
    addLaterCommand(file, "view", translate("Orbisk", "View File"));
    addLaterCommand(file, "edit", translate("Orbisk", "Edit File"));
    addLaterCommand(file, "copy", translate("Orbisk", "Copy to Other Pane"));
    addLaterCommand(file, "move", translate("Orbisk", "Move to Other Pane"));
    addLaterCommand(file, "rename", translate("Orbisk", "Rename"));
    addLaterCommand(file, "newFolder", translate("Orbisk", "New Folder"));
    addLaterCommand(file, "newFolderWithItems", translate("Orbisk", "New Folder with Selection"));
    addLaterCommand(file, "newTextFile", translate("Orbisk", "New Text File"));
    addLaterCommand(file, "duplicate", translate("Orbisk", "Duplicate"));
    addLaterCommand(file, "trash", translate("Orbisk", "Move to Trash"));
    addLaterCommand(file, "compress", translate("Orbisk", "Compress to ZIP"));
    addLaterCommand(file, "extract", translate("Orbisk", "Extract ZIP"));
    addLaterCommand(file, "quickLook", translate("Orbisk", "Quick Look"));
    addLaterCommand(file, "reveal", translate("Orbisk", "Show in File Manager"));
    file->addSeparator();
    connect(addCommand(file, "closeWindow", translate("Orbisk", "Close Window")), &QAction::triggered, this,
            &QWidget::close);
    connect(addCommand(file, "quit", translate("Orbisk", "Quit")), &QAction::triggered, this, &QWidget::close);

    auto* edit = menuBar()->addMenu(qtext(translate("Orbisk", "&Edit")));
    addLaterCommand(edit, "undo", translate("Orbisk", "Undo"));
    addLaterCommand(edit, "redo", translate("Orbisk", "Redo"));
    edit->addSeparator();
    addLaterCommand(edit, "copyFiles", translate("Orbisk", "Copy Files"));
    addLaterCommand(edit, "pasteFiles", translate("Orbisk", "Paste Files"));
    addLaterCommand(edit, "moveHere", translate("Orbisk", "Move Copied Files Here"));
    connect(addCommand(edit, "copyNames", translate("Orbisk", "Copy Names as Text")), &QAction::triggered, this,
            [this] {
                QStringList names;
                for (const auto& item : activePane().selectedItems())
                    names << QString::fromStdString(DisplayText::visible(item.name()));
                QApplication::clipboard()->setText(names.join(QLatin1Char('\n')));
            });
    connect(addCommand(edit, "copyPaths", translate("Orbisk", "Copy Paths as Text")), &QAction::triggered, this,
            [this] {
                QStringList paths;
                for (const auto& item : activePane().selectedItems())
                    paths << QString::fromStdString(DisplayText::visible(item.url().native()));
                QApplication::clipboard()->setText(paths.join(QLatin1Char('\n')));
            });
    edit->addSeparator();
    connect(addCommand(edit, "selectAll", translate("Orbisk", "Select All")), &QAction::triggered, this,
            [this] { activePane().selectAll(); });
    connect(addCommand(edit, "deselectAll", translate("Orbisk", "Deselect All")), &QAction::triggered, this,
            [this] { activePane().deselectAll(); });
    connect(addCommand(edit, "invertSelection", translate("Orbisk", "Invert Selection")), &QAction::triggered, this,
            [this] { activePane().invertSelection(); });
    connect(addCommand(edit, "selectByPattern", translate("Orbisk", "Select by Pattern…")), &QAction::triggered, this,
            [this] { promptPattern(true); });
    connect(addCommand(edit, "deselectByPattern", translate("Orbisk", "Deselect by Pattern…")), &QAction::triggered,
            this, [this] { promptPattern(false); });
    edit->addSeparator();
    connect(addCommand(edit, "filter", translate("Orbisk", "Filter")), &QAction::triggered, this,
            [this] { paneWidget(active_).focusFilter(); });
    addLaterCommand(edit, "findFiles", translate("Orbisk", "Find Files…"));

    auto* view = menuBar()->addMenu(qtext(translate("Orbisk", "&View")));
    auto* hidden = addCommand(view, "toggleHidden", translate("Orbisk", "Show Hidden Files"));
    hidden->setCheckable(true);
    connect(hidden, &QAction::triggered, this, [this](bool on) { settings_.setShowHiddenFiles(on); });
    const std::pair<const char*, SortColumn> sorts[] = {{"sortByName", SortColumn::name},
                                                        {"sortBySize", SortColumn::size},
                                                        {"sortByDate", SortColumn::date},
                                                        {"sortByKind", SortColumn::kind}};
    const std::string sortTitles[] = {translate("Orbisk", "Sort by Name"), translate("Orbisk", "Sort by Size"),
                                      translate("Orbisk", "Sort by Date Modified"),
                                      translate("Orbisk", "Sort by Kind")};
    for (std::size_t i = 0; i < std::size(sorts); ++i) {
        const auto column = sorts[i].second;
        connect(addCommand(view, sorts[i].first, sortTitles[i]), &QAction::triggered, this, [this, column] {
            auto spec = activePane().activeTab().sort;
            spec.ascending = spec.column == column ? !spec.ascending : true;
            spec.column = column;
            activePane().setSort(spec);
        });
    }
    view->addSeparator();
    connect(addCommand(view, "refresh", translate("Orbisk", "Refresh")), &QAction::triggered, this,
            [this] { activePane().reload(); });
    auto* sidebar = addCommand(view, "toggleSidebar", translate("Orbisk", "Show Sidebar"));
    sidebar->setCheckable(true);
    sidebar->setChecked(true);
    connect(sidebar, &QAction::toggled, sidebar_, &QWidget::setVisible);
    auto* keyBar = view->addAction(qtext(translate("Orbisk", "Show Function Key Bar")));
    keyBar->setCheckable(true);
    keyBar->setChecked(settings_.showFunctionKeyBar());
    connect(keyBar, &QAction::triggered, this, [this](bool on) { settings_.setShowFunctionKeyBar(on); });
    commands_.emplace_back("toggleFunctionKeyBar", keyBar);
    connect(addCommand(view, "fullScreen", translate("Orbisk", "Full Screen")), &QAction::triggered, this,
            [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });

    auto* go = menuBar()->addMenu(qtext(translate("Orbisk", "&Go")));
    connect(addCommand(go, "back", translate("Orbisk", "Back")), &QAction::triggered, this,
            [this] { activePane().goBack(); });
    connect(addCommand(go, "forward", translate("Orbisk", "Forward")), &QAction::triggered, this,
            [this] { activePane().goForward(); });
    connect(addCommand(go, "enclosingFolder", translate("Orbisk", "Enclosing Folder")), &QAction::triggered, this,
            [this] { activePane().goUp(); });
    connect(addCommand(go, "showPackageContents", translate("Orbisk", "Show Package Contents")), &QAction::triggered,
            this, [this] {
                // Linux has no packages: a folder under the cursor is simply entered.
                if (const auto item = activePane().focusedItem(); item && item->isDirectory)
                    activePane().openFocused();
            });
    go->addSeparator();
    const std::pair<const char*, std::filesystem::path> places[] = {
        {"goHome", Paths::home()},
        {"goDesktop", Sidebar::userFolder(QStandardPaths::DesktopLocation)},
        {"goDocuments", Sidebar::userFolder(QStandardPaths::DocumentsLocation)},
        {"goDownloads", Sidebar::userFolder(QStandardPaths::DownloadLocation)}};
    const std::string placeTitles[] = {translate("Orbisk", "Home"), translate("Orbisk", "Desktop"),
                                       translate("Orbisk", "Documents"), translate("Orbisk", "Downloads")};
    for (std::size_t i = 0; i < std::size(places); ++i) {
        const auto folder = places[i].second;
        auto* action = addCommand(go, places[i].first, placeTitles[i]);
        action->setEnabled(!folder.empty());
        connect(action, &QAction::triggered, this, [this, folder] { activePane().navigate(folder); });
    }
    connect(addCommand(go, "goToFolder", translate("Orbisk", "Go to Folder…")), &QAction::triggered, this,
            &MainWindow::goToFolder);
    go->addSeparator();
    connect(addCommand(go, "addFavorite", translate("Orbisk", "Add to Favorites")), &QAction::triggered, this, [this] {
        settings_.setFavoriteLocations(Favorites::added(settings_.favoriteLocations(), activePane().directory()));
    });
    for (std::size_t number = 0; number < 9; ++number) {
        auto* action = new QAction(qtext(L(translate("Orbisk", "Favorite %lld"), number + 1)), this);
        action->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + number)));
        connect(action, &QAction::triggered, this, [this, number] { goToFavorite(number); });
        go->addAction(action);
        commands_.emplace_back("goToFavorite" + std::to_string(number + 1), action);
    }

    auto* commands = menuBar()->addMenu(qtext(translate("Orbisk", "&Commands")));
    connect(addCommand(commands, "switchPane", translate("Orbisk", "Switch Pane")), &QAction::triggered, this, [this] {
        setActiveSide(otherSide());
        paneWidget(active_).list()->setFocus(Qt::TabFocusReason);
    });
    connect(addCommand(commands, "swapPanes", translate("Orbisk", "Swap Panes")), &QAction::triggered, this,
            [this] { activePane().swapLocations(pane(otherSide())); });
    connect(addCommand(commands, "sameFolder", translate("Orbisk", "Same Folder in Other Pane")), &QAction::triggered,
            this, [this] { pane(otherSide()).navigate(activePane().directory()); });
    connect(addCommand(commands, "nextTab", translate("Orbisk", "Next Tab")), &QAction::triggered, this,
            [this] { activePane().selectAdjacentTab(1); });
    connect(addCommand(commands, "previousTab", translate("Orbisk", "Previous Tab")), &QAction::triggered, this,
            [this] { activePane().selectAdjacentTab(-1); });
    connect(addCommand(commands, "focusSidebar", translate("Orbisk", "Move Keyboard to Sidebar")), &QAction::triggered,
            this, [this] { sidebar_->setFocus(Qt::ShortcutFocusReason); });
    commands->addSeparator();
    addLaterCommand(commands, "ask", translate("Orbisk", "Ask…"));
    addLaterCommand(commands, "calculateFolderSizes", translate("Orbisk", "Calculate Folder Sizes"));
    addLaterCommand(commands, "batchRename", translate("Orbisk", "Batch Rename…"));
    addLaterCommand(commands, "syncFolders", translate("Orbisk", "Sync Folders…"));
    addLaterCommand(commands, "breakdown", translate("Orbisk", "Folder Breakdown"));

    auto* window = menuBar()->addMenu(qtext(translate("Orbisk", "&Window")));
    connect(addCommand(window, "settings", translate("Orbisk", "Settings…")), &QAction::triggered, this,
            &MainWindow::showSettings);
    connect(addCommand(window, "minimize", translate("Orbisk", "Minimize")), &QAction::triggered, this,
            &QWidget::showMinimized);
    connect(addCommand(window, "mainWindow", translate("Orbisk", "Main Window")), &QAction::triggered, this, [this] {
        showNormal();
        raise();
        activateWindow();
    });

    auto* help = menuBar()->addMenu(qtext(translate("Orbisk", "&Help")));
    connect(addCommand(help, "keyboardShortcuts", translate("Orbisk", "Keyboard Shortcuts")), &QAction::triggered, this,
            &MainWindow::showShortcuts);
}

void MainWindow::buildFunctionKeys()
{
    const std::tuple<const char*, std::string, const char*> keys[] = {
        {"F1", translate("Orbisk", "Help"), "keyboardShortcuts"},
        {"F3", translate("Orbisk", "View||function key"), "view"},
        {"F4", translate("Orbisk", "Edit||function key"), "edit"},
        {"F5", translate("Orbisk", "Copy"), "copy"},
        {"F6", translate("Orbisk", "Move"), "move"},
        {"F7", translate("Orbisk", "New Folder"), "newFolder"},
        {"F8", translate("Orbisk", "Trash"), "trash"},
        {"F10", translate("Orbisk", "Quit"), "quit"}};
    for (const auto& [key, label, identifier] : keys)
        keyBar_->addKey(QString::fromLatin1(key), qtext(label), command(identifier));
}

void MainWindow::updateCommands()
{
    if (commands_.empty())
        return;
    const auto& pane = activePane();
    command("back")->setEnabled(pane.canGoBack());
    command("forward")->setEnabled(pane.canGoForward());
    command("enclosingFolder")->setEnabled(pane.canGoUp());
    command("closeTab")->setEnabled(pane.tabs().size() > 1);
    command("toggleHidden")->setChecked(settings_.showHiddenFiles());
    command("toggleFunctionKeyBar")->setChecked(settings_.showFunctionKeyBar());
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
            QMessageBox::warning(this, qtext(translate("Orbisk", "Go to Folder")),
                                 qtext(L(translate("Orbisk", "There is no folder at “%@”."), folder.native())));
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
