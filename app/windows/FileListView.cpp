#include "windows/FileListView.h"

#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>

#include <sys/stat.h>

namespace orbisk {

FileListView::FileListView(QWidget* parent) : QTableView(parent)
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false); // Tab switches panes
    setEditTriggers(NoEditTriggers);
    setAlternatingRowColors(true);
    setSortingEnabled(false); // the pane sorts; the header only reports clicks
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
    horizontalHeader()->setStretchLastSection(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setDropIndicatorShown(false);
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        if (index.isValid())
            emit openRequested(index.row());
    });
}

void FileListView::keyboardSearch(const QString& search)
{
    // Only the name offers text to type-select, whichever cell has the focus.
    const auto current = currentIndex();
    if (current.isValid() && current.column() != 0)
        selectionModel()->setCurrentIndex(current.siblingAtColumn(0), QItemSelectionModel::NoUpdate);
    QTableView::keyboardSearch(search);
}

void FileListView::keyPressEvent(QKeyEvent* event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier))) {
        if (currentIndex().isValid())
            emit openRequested(currentIndex().row());
        event->accept();
        return;
    }
    if ((event->key() == Qt::Key_Home || event->key() == Qt::Key_End) && (event->modifiers() & Qt::ControlModifier) &&
        !(event->modifiers() & Qt::AltModifier)) {
        // The table would move the current row without selecting it; Ctrl adds nothing to a list
        // whose Home and End already go to the ends, so it goes the way the plain key does.
        QKeyEvent plain(event->type(), event->key(), event->modifiers() & ~Qt::ControlModifier, event->text(),
                        event->isAutoRepeat(), static_cast<ushort>(event->count()));
        QTableView::keyPressEvent(&plain);
        event->setAccepted(plain.isAccepted());
        return;
    }
    QTableView::keyPressEvent(event);
}

QModelIndex FileListView::moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers)
{
    // Rows are what the cursor stands on: Home and End go to the first and last one, never to
    // the first or last column of the current row.
    if ((cursorAction == MoveHome || cursorAction == MoveEnd) && model() && model()->rowCount() > 0)
        return model()->index(cursorAction == MoveHome ? 0 : model()->rowCount() - 1, 0);
    return QTableView::moveCursor(cursorAction, modifiers);
}

void FileListView::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    emit focused();
}

void FileListView::startDrag(Qt::DropActions)
{
    const auto paths = dragSources ? dragSources() : std::vector<std::filesystem::path>{};
    if (paths.empty())
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(FileMimeData::make(paths, false));
    // Whatever the receiver does, it does to the files itself; nothing is removed here afterwards.
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

std::optional<std::pair<std::filesystem::path, Qt::DropAction>> FileListView::dropTarget(const QDropEvent& event) const
{
    const auto offer = FileMimeData::read(event.mimeData());
    if (!offer || !dropFolder)
        return std::nullopt;
    const auto index = indexAt(event.position().toPoint());
    auto folder = dropFolder(index.isValid() ? index.row() : -1);
    if (!folder)
        return std::nullopt;
    // A status query of each end, as cheap as the drag needs it to be.
    struct stat source {};
    struct stat target {};
    const bool sameVolume = ::lstat(offer->paths.front().c_str(), &source) == 0 &&
                            ::stat(folder->c_str(), &target) == 0 && source.st_dev == target.st_dev;
    auto action = FileMimeData::dropAction(event.modifiers(), sameVolume);
    if (!(event.possibleActions() & action))
        action = event.proposedAction();
    return std::pair{std::move(*folder), action};
}

void FileListView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!dropTarget(*event) && !FileMimeData::read(event->mimeData())) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
}

void FileListView::dragMoveEvent(QDragMoveEvent* event)
{
    const auto target = dropTarget(*event);
    if (!target) {
        event->ignore();
        return;
    }
    event->setDropAction(target->second);
    event->accept();
}

void FileListView::dropEvent(QDropEvent* event)
{
    const auto target = dropTarget(*event);
    const auto offer = FileMimeData::read(event->mimeData());
    if (!target || !offer || !onDrop) {
        event->ignore();
        return;
    }
    event->setDropAction(target->second);
    event->accept();
    onDrop(*offer, target->first, target->second);
}

} // namespace orbisk
