// The table of a pane: Return opens, type-to-select looks at names only, rows select whole, Home and
// End go to the first and last row.
#pragma once

#include "commands/FileMimeData.h"

#include <QTableView>

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace orbisk {

class FileListView : public QTableView {
    Q_OBJECT
public:
    explicit FileListView(QWidget* parent = nullptr);

    void keyboardSearch(const QString& search) override;

    /// The files a drag from this list carries (the pane's selection); none means no drag starts.
    std::function<std::vector<std::filesystem::path>()> dragSources;
    /// The folder that files dropped on row (-1 for the empty space) go into, or none to refuse.
    std::function<std::optional<std::filesystem::path>(int row)> dropFolder;
    /// Called when files from this or any other program are dropped into folder.
    std::function<void(const FileOffer& offer, const std::filesystem::path& folder, Qt::DropAction action)> onDrop;

signals:
    /// Return or Enter on the focused row.
    void openRequested(int row);
    void focused();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    QModelIndex moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) override;
    void focusInEvent(QFocusEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    /// The folder and action for a drop at position, or none when nothing may be dropped there.
    [[nodiscard]] std::optional<std::pair<std::filesystem::path, Qt::DropAction>>
    dropTarget(const QDropEvent& event) const;
};

} // namespace orbisk
