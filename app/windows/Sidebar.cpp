#include "windows/Sidebar.h"

#include "support/DisplayText.h"
#include "support/Paths.h"
#include "support/Translate.h"

#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QStandardPaths>
#include <QStyle>

namespace orbisk {
namespace {

constexpr int pathRole = Qt::UserRole;

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

QString nameOf(const std::filesystem::path& folder)
{
    const auto name = folder.filename().native();
    return qtext(DisplayText::displayName(name.empty() ? folder.native() : name));
}

std::filesystem::path pathOf(const QTreeWidgetItem* item)
{
    const auto bytes = item->data(0, pathRole).toByteArray();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

QTreeWidgetItem* section(QTreeWidget* tree, const std::string& title)
{
    auto* item = new QTreeWidgetItem(tree, {qtext(title)});
    item->setFlags(Qt::ItemIsEnabled);
    auto font = item->font(0);
    font.setBold(true);
    item->setFont(0, font);
    item->setExpanded(true);
    return item;
}

} // namespace

Sidebar::Sidebar(QWidget* parent) : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(10);
    setFocusPolicy(Qt::ClickFocus);
    setContextMenuPolicy(Qt::CustomContextMenu);
    places_ = section(this, translate("Orbisk", "Places"));
    volumes_ = section(this, translate("Orbisk", "Volumes"));
    favorites_ = section(this, translate("Orbisk", "Favorites"));
    recent_ = section(this, translate("Orbisk", "Recent"));

    std::vector<std::pair<QString, std::filesystem::path>> places{{qtext(translate("Orbisk", "Home")), Paths::home()}};
    const std::pair<const char*, QStandardPaths::StandardLocation> userFolders[] = {
        {"Desktop", QStandardPaths::DesktopLocation},
        {"Documents", QStandardPaths::DocumentsLocation},
        {"Downloads", QStandardPaths::DownloadLocation}};
    for (const auto& [title, location] : userFolders) {
        const auto folder = userFolder(location);
        if (!folder.empty() && folder != Paths::home())
            places.emplace_back(nameOf(folder), folder);
    }
    places.emplace_back(QStringLiteral("/"), "/");
    fill(places_, places);
    volumes_->setHidden(true);

    connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        if (item->parent())
            emit folderChosen(pathOf(item));
    });
    connect(this, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        if (item->parent())
            emit folderChosen(pathOf(item));
    });
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        auto* item = itemAt(at);
        if (!item || item->parent() != favorites_)
            return;
        const auto index = static_cast<std::size_t>(favorites_->indexOfChild(item));
        const auto count = static_cast<std::size_t>(favorites_->childCount());
        QMenu menu(this);
        auto* up = menu.addAction(qtext(translate("Orbisk", "Move Up")));
        up->setEnabled(index > 0);
        auto* down = menu.addAction(qtext(translate("Orbisk", "Move Down")));
        down->setEnabled(index + 1 < count);
        auto* remove = menu.addAction(qtext(translate("Orbisk", "Remove from Favorites")));
        const auto* chosen = menu.exec(viewport()->mapToGlobal(at));
        if (chosen == up)
            emit moveFavorite(index, index - 1);
        else if (chosen == down)
            emit moveFavorite(index, index + 1);
        else if (chosen == remove)
            emit removeFavorite(pathOf(item));
    });
}

std::filesystem::path Sidebar::userFolder(int standardLocation)
{
    const auto location =
        QStandardPaths::writableLocation(static_cast<QStandardPaths::StandardLocation>(standardLocation));
    if (location.isEmpty())
        return {};
    const auto bytes = QFile::encodeName(location);
    std::filesystem::path folder(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    return Paths::isExistingFolder(folder) ? folder : std::filesystem::path();
}

void Sidebar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        emit leaveRequested();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void Sidebar::fill(QTreeWidgetItem* sectionItem, const std::vector<std::pair<QString, std::filesystem::path>>& entries)
{
    qDeleteAll(sectionItem->takeChildren());
    const auto icon = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
    for (const auto& [title, folder] : entries) {
        auto* item = new QTreeWidgetItem(sectionItem, {title});
        item->setIcon(0, icon);
        item->setData(0, pathRole, QByteArray(folder.native().data(), static_cast<qsizetype>(folder.native().size())));
        item->setToolTip(0, qtext(DisplayText::visible(folder.native())));
    }
    sectionItem->setHidden(entries.empty());
}

void Sidebar::setVolumes(const std::vector<MountEntry>& volumes)
{
    std::vector<std::pair<QString, std::filesystem::path>> entries;
    for (const auto& volume : volumes)
        entries.emplace_back(nameOf(volume.mountPoint), volume.mountPoint);
    fill(volumes_, entries);
}

void Sidebar::setFavorites(const std::vector<std::filesystem::path>& favorites)
{
    std::vector<std::pair<QString, std::filesystem::path>> entries;
    for (const auto& folder : favorites)
        entries.emplace_back(nameOf(folder), folder);
    fill(favorites_, entries);
    favorites_->setHidden(false);
}

void Sidebar::setRecent(const std::deque<std::filesystem::path>& recent)
{
    std::vector<std::pair<QString, std::filesystem::path>> entries;
    for (const auto& folder : recent)
        entries.emplace_back(nameOf(folder), folder);
    fill(recent_, entries);
}

} // namespace orbisk
