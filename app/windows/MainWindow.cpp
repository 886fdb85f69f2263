#include "windows/MainWindow.h"

#include "AppSettings.h"
#include "commands/FileCommands.h"
#include "operations/FileUndoCenter.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "panes/SessionState.h"
#include "places/Favorites.h"
#include "places/VolumeMonitor.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "text/TextWindows.h"
#include "windows/FileListView.h"
#include "windows/FunctionKeyBar.h"
#include "windows/PaneWidget.h"
#include "windows/Sidebar.h"

#include <QAction>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMessageBox>
#include <QSplitter>
#include <QUrl>
#include <QVBoxLayout>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

bool openWithDefaultApplication(const std::filesystem::path& file)
{
    // Percent-encoding the raw bytes keeps a name that is not UTF-8 exact on its way to xdg-open.
    const QByteArray bytes(file.native().data(), static_cast<qsizetype>(file.native().size()));
    return QDesktopServices::openUrl(QUrl::fromEncoded("file://" + bytes.toPercentEncoding("/")));
}

} // namespace

MainWindow::MainWindow(AppSettings& settings, QWidget* parent) : QMainWindow(parent), settings_(settings)
{
    for (const Side side : {Side::left, Side::right}) {
        PaneServices services;
        services.settings = &settings_;
        services.describe = [kinds = kinds_](const FileItem& item) { return kinds->describe(item); };
        services.openFile = openWithDefaultApplication;
        auto* pane = new PaneViewController(side, std::move(services), this);
        panes_[index(side)] = pane;
        auto* widget = new PaneWidget(*pane, *kinds_);
        paneWidgets_[index(side)] = widget;
        widget->setFavoriteTest(
            [this, pane] { return Favorites::contains(settings_.favoriteLocations(), pane->directory()); });
        connect(widget, &PaneWidget::activated, this, [this, side] { setActiveSide(side); });
        connect(widget, &PaneWidget::favoriteToggled, this, [this, side] {
            setActiveSide(side);
            toggleFavorite();
        });
        connect(pane, &PaneViewController::locationChanged, this, [this] {
            updateTitle();
            updateCommands();
        });
        // The status line follows every change of selection and focus, whoever made it.
        connect(pane, &PaneViewController::statusChanged, this, [this, side] {
            if (side == active_) {
                updateCommands();
                followWithPreview();
            }
        });
        connect(pane, &PaneViewController::openFailed, this, [this](const QString& message) {
            auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Orbisk"), message, QMessageBox::Ok, this);
            box->setAttribute(Qt::WA_DeleteOnClose);
            box->open();
        });
        connect(pane, &PaneViewController::visited, this, [this](const std::filesystem::path& folder) {
            recent_.visit(folder);
            sidebar_->setRecent(recent_.folders());
        });
    }

    sidebar_ = new Sidebar;
    divider_ = new QSplitter(Qt::Horizontal);
    divider_->addWidget(paneWidgets_[0]);
    divider_->addWidget(paneWidgets_[1]);
    divider_->setChildrenCollapsible(false);
    outer_ = new QSplitter(Qt::Horizontal);
    outer_->addWidget(sidebar_);
    outer_->addWidget(divider_);
    outer_->setStretchFactor(1, 1);
    outer_->setSizes({180, 1000});
    keyBar_ = new FunctionKeyBar;

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(outer_, 1);
    layout->addWidget(keyBar_);
    setCentralWidget(central);

    volumes_ = new VolumeMonitor(this);
    sidebar_->setVolumes(volumes_->mounts().userVolumes());
    connect(volumes_, &VolumeMonitor::mountsChanged, this,
            [this] { sidebar_->setVolumes(volumes_->mounts().userVolumes()); });
    connect(sidebar_, &Sidebar::folderChosen, this, [this](const std::filesystem::path& folder) {
        activePane().navigate(folder);
        paneWidget(active_).list()->setFocus(Qt::OtherFocusReason);
    });
    connect(sidebar_, &Sidebar::leaveRequested, this,
            [this] { paneWidget(active_).list()->setFocus(Qt::OtherFocusReason); });
    connect(sidebar_, &Sidebar::removeFavorite, this, [this](const std::filesystem::path& folder) {
        settings_.setFavoriteLocations(Favorites::removed(settings_.favoriteLocations(), folder));
    });
    connect(sidebar_, &Sidebar::moveFavorite, this, [this](std::size_t from, std::size_t to) {
        settings_.setFavoriteLocations(Favorites::moved(settings_.favoriteLocations(), from, to));
    });
    connect(&settings_, &AppSettings::favoritesChanged, this, &MainWindow::refreshFavorites);
    connect(&settings_, &AppSettings::changed, this, [this] {
        for (auto* pane : panes_)
            pane->preferencesChanged();
        keyBar_->setVisible(settings_.showFunctionKeyBar());
        updateCommands();
    });

    undo_ = std::make_unique<FileUndoCenter>();
    undo_->setWindow(this);
    runner_ = std::make_unique<OperationRunner>(*undo_);
    connect(undo_.get(), &FileUndoCenter::historyChanged, this, &MainWindow::updateUndoCommands);
    connect(undo_.get(), &FileUndoCenter::reverted, this, [this](const std::vector<UndoChange>& changes) {
        // What a revert put back (or brought back from the Trash) is selected where it now is.
        OperationReport report;
        for (const auto& change : changes) {
            if (const auto* created = std::get_if<UndoChange::Created>(&change.change))
                report.completed.push_back({created->at, created->at});
            else if (const auto* moved = std::get_if<UndoChange::Moved>(&change.change))
                report.completed.push_back({moved->from, moved->to});
        }
        showResults(report);
    });

    files_ = new FileCommands(*this, settings_);
    texts_ = new TextWindows(this, openWithDefaultApplication);
    buildCommands();
    buildFunctionKeys();
    updateUndoCommands();
    keyBar_->setVisible(settings_.showFunctionKeyBar());
    refreshFavorites();
    resize(1360, 860);
    setActiveSide(Side::left);
}

MainWindow::~MainWindow() = default;

void MainWindow::showResults(const OperationReport& report)
{
    for (auto* pane : panes_) {
        std::vector<std::string> names;
        for (const auto& item : report.completed) {
            if (item.destination.parent_path() == pane->directory())
                names.push_back(item.destination.filename().native());
        }
        // Selected once the new listing has them, the first one focused.
        pane->reloadSelecting(std::move(names));
    }
}

void MainWindow::restoreSession()
{
    const auto saved = SessionCoding::decode(settings_.session());
    if (!saved) {
        for (auto* pane : panes_)
            pane->navigate(pane->directory(), {}, HistoryMode::reload);
        return;
    }
    pane(Side::left).restore(saved->left);
    pane(Side::right).restore(saved->right);
    setDividerRatio(saved->dividerRatio);
    setActiveSide(saved->activeIsRight ? Side::right : Side::left);
}

void MainWindow::saveSession()
{
    SessionState state;
    state.left = pane(Side::left).session();
    state.right = pane(Side::right).session();
    state.activeIsRight = active_ == Side::right;
    state.dividerRatio = dividerRatio();
    settings_.setSession(SessionCoding::encode(state));
    settings_.sync();
}

double MainWindow::dividerRatio() const
{
    const auto sizes = divider_->sizes();
    const int total = sizes.value(0) + sizes.value(1);
    return total > 0 ? static_cast<double>(sizes.value(0)) / total : 0.5;
}

void MainWindow::setDividerRatio(double ratio)
{
    // The splitter shares out its real width in these proportions once it is laid out.
    const int share = static_cast<int>(ratio * 10000);
    divider_->setSizes({share, 10000 - share});
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (texts_ && !texts_->mayClose()) {
        event->ignore(); // an editor asks about its unsaved changes first
        return;
    }
    saveSession();
    event->accept();
}

void MainWindow::setActiveSide(Side side)
{
    active_ = side;
    pane(side).setActive(true);
    pane(otherSide()).setActive(false);
    for (auto* widget : paneWidgets_)
        widget->refreshHeader();
    auto* list = paneWidget(side).list();
    if (!list->hasFocus() && !paneWidget(side).filterField()->hasFocus())
        list->setFocus(Qt::OtherFocusReason);
    updateTitle();
    updateCommands();
}

void MainWindow::updateTitle()
{
    const auto& folder = activePane().directory();
    const auto name = folder.filename().native();
    setWindowTitle(qtext(DisplayText::displayName(name.empty() ? folder.native() : name)) +
                   QStringLiteral(" — Orbisk"));
}

void MainWindow::toggleFavorite()
{
    const auto folder = activePane().directory();
    const auto favorites = settings_.favoriteLocations();
    settings_.setFavoriteLocations(Favorites::contains(favorites, folder) ? Favorites::removed(favorites, folder)
                                                                          : Favorites::added(favorites, folder));
}

void MainWindow::goToFavorite(std::size_t number)
{
    const auto favorites = settings_.favoriteLocations();
    if (number < favorites.size())
        activePane().navigate(favorites[number]);
}

void MainWindow::refreshFavorites()
{
    sidebar_->setFavorites(settings_.favoriteLocations());
    for (auto* widget : paneWidgets_)
        widget->refreshHeader();
}

} // namespace orbisk
