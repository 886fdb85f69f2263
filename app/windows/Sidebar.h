// The sidebar: places (home, user folders, "/", mounted volumes), favourites and recent folders.
#pragma once

#include "platform/MountTable.h"

#include <QTreeWidget>

#include <deque>
#include <filesystem>
#include <vector>

namespace orbisk {

class Sidebar : public QTreeWidget {
    Q_OBJECT
public:
    explicit Sidebar(QWidget* parent = nullptr);

    void setVolumes(const std::vector<MountEntry>& volumes);
    void setFavorites(const std::vector<std::filesystem::path>& favorites);
    void setRecent(const std::deque<std::filesystem::path>& recent);

    /// The XDG user folder of a kind (QStandardPaths), as bytes; empty when it does not exist.
    [[nodiscard]] static std::filesystem::path userFolder(int standardLocation);

signals:
    void folderChosen(const std::filesystem::path& folder);
    void removeFavorite(const std::filesystem::path& folder);
    void moveFavorite(std::size_t from, std::size_t to);
    /// Esc: the keyboard goes back to the active pane.
    void leaveRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fill(QTreeWidgetItem* section, const std::vector<std::pair<QString, std::filesystem::path>>& entries);
    QTreeWidgetItem* places_;
    QTreeWidgetItem* volumes_;
    QTreeWidgetItem* favorites_;
    QTreeWidgetItem* recent_;
};

} // namespace orbisk
