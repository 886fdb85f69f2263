#include "windows/FileListView.h"

#include <QHeaderView>
#include <QKeyEvent>

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
    QTableView::keyPressEvent(event);
}

void FileListView::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    emit focused();
}

} // namespace orbisk
