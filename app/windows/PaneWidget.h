// One pane on screen: header with path and star, tabs, the list, filter field and status line.
#pragma once

#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QTabBar;
class QToolButton;

namespace orbisk {

class FileListModel;
class FileListView;
class KindTexts;
class PaneViewController;

class PaneWidget : public QWidget {
    Q_OBJECT
public:
    PaneWidget(PaneViewController& pane, KindTexts& kinds, QWidget* parent = nullptr);

    [[nodiscard]] PaneViewController& pane() const { return pane_; }
    [[nodiscard]] FileListView* list() const { return list_; }
    [[nodiscard]] QLineEdit* filterField() const { return filter_; }

    /// Whether the star shows the folder as a favourite; asked whenever the folder changes.
    void setFavoriteTest(std::function<bool()> isFavorite);
    /// Puts the keyboard into the filter field (Ctrl+F).
    void focusFilter();
    /// Redraws the active mark, the header and the star.
    void refreshHeader();

signals:
    /// The user clicked into the pane or its list took the focus.
    void activated();
    void favoriteToggled();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showRows();
    void showSelection();
    void takeSelectionFromView();
    void showTabs();
    void showSort();

    PaneViewController& pane_;
    FileListModel* model_;
    FileListView* list_;
    QWidget* header_;
    QLabel* path_;
    QToolButton* star_;
    QTabBar* tabs_;
    QLineEdit* filter_;
    QLabel* status_;
    QLabel* busy_;
    QLabel* freeSpace_;
    std::function<bool()> isFavorite_;
    bool syncing_ = false;
    bool applyingSortDescriptors_ = false;
};

} // namespace orbisk
