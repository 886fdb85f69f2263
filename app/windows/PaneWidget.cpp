#include "windows/PaneWidget.h"

#include "panes/PaneViewController.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "windows/FileListModel.h"
#include "windows/FileListView.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

QString tabTitle(const std::filesystem::path& folder)
{
    const auto name = folder.filename().native();
    return qtext(DisplayText::displayName(name.empty() ? folder.native() : name));
}

} // namespace

PaneWidget::PaneWidget(PaneViewController& pane, KindTexts& kinds, QWidget* parent) : QWidget(parent), pane_(pane)
{
    header_ = new QWidget(this);
    header_->setAutoFillBackground(true);
    path_ = new QLabel(header_);
    path_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    path_->setMinimumWidth(50);
    star_ = new QToolButton(header_);
    star_->setAutoRaise(true);
    star_->setToolTip(qtext(translate("Orbisk", "Add the current folder to Favorites")));
    filter_ = new QLineEdit(header_);
    filter_->setPlaceholderText(qtext(translate("Orbisk", "Filter")));
    filter_->setClearButtonEnabled(true);
    filter_->setMaximumWidth(180);
    filter_->installEventFilter(this);
    auto* headerLayout = new QHBoxLayout(header_);
    headerLayout->setContentsMargins(6, 3, 6, 3);
    headerLayout->addWidget(star_);
    headerLayout->addWidget(path_, 1);
    headerLayout->addWidget(filter_);

    tabs_ = new QTabBar(this);
    tabs_->setTabsClosable(true);
    tabs_->setExpanding(false);
    tabs_->setDocumentMode(true);
    tabs_->setFocusPolicy(Qt::NoFocus);

    model_ = new FileListModel(pane.rows(), kinds, this);
    model_->setFolderSizeText([this](const FileItem& item) { return pane_.folderSizeText(item); });
    list_ = new FileListView(this);
    list_->setModel(model_);
    auto* columns = list_->horizontalHeader();
    columns->setSectionResizeMode(FileListModel::name, QHeaderView::Stretch);
    columns->resizeSection(FileListModel::size, 80);
    columns->resizeSection(FileListModel::date, 150);
    columns->resizeSection(FileListModel::kind, 150);

    status_ = new QLabel(this);
    busy_ = new QLabel(qtext(translate("Orbisk", "Loading…")), this);
    busy_->hide();
    freeSpace_ = new QLabel(this);
    auto* statusLayout = new QHBoxLayout;
    statusLayout->setContentsMargins(6, 2, 6, 2);
    statusLayout->setSpacing(12);
    statusLayout->addWidget(status_, 1);
    statusLayout->addWidget(busy_);
    statusLayout->addWidget(freeSpace_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(header_);
    layout->addWidget(tabs_);
    layout->addWidget(list_, 1);
    layout->addLayout(statusLayout);

    connect(&pane_, &PaneViewController::rowsChanged, this, &PaneWidget::showRows);
    connect(&pane_, &PaneViewController::selectionChanged, this, &PaneWidget::showSelection);
    connect(&pane_, &PaneViewController::folderSizesChanged, model_, &FileListModel::sizesChanged);
    connect(&pane_, &PaneViewController::statusChanged, this, [this] { status_->setText(qtext(pane_.statusText())); });
    connect(&pane_, &PaneViewController::busyIndicatorChanged, busy_, &QLabel::setVisible);
    connect(&pane_, &PaneViewController::locationChanged, this, [this] {
        showTabs();
        refreshHeader();
        freeSpace_->setText(qtext(pane_.freeSpaceText()));
        const auto filter = qtext(pane_.activeTab().filter);
        if (filter_->text() != filter)
            filter_->setText(filter);
    });
    connect(&pane_, &PaneViewController::scrollRequested, this, [this](double y) {
        // The view lays out its new rows on the next pass; scroll after that.
        QTimer::singleShot(0, list_, [this, y] {
            list_->verticalScrollBar()->setValue(static_cast<int>(y));
            if (list_->currentIndex().isValid())
                list_->scrollTo(list_->currentIndex());
        });
    });
    connect(list_, &FileListView::openRequested, &pane_, &PaneViewController::openRow);
    connect(list_, &FileListView::focused, this, &PaneWidget::activated);
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &PaneWidget::takeSelectionFromView);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, &PaneWidget::takeSelectionFromView);
    connect(list_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { pane_.setScrollY(value); });
    connect(columns, &QHeaderView::sectionClicked, this, [this](int column) {
        if (applyingSortDescriptors_)
            return;
        pane_.sortBy(FileListModel::sortColumn(column));
        showSort();
    });
    connect(tabs_, &QTabBar::currentChanged, this, [this](int index) {
        if (!syncing_)
            pane_.selectTab(index);
    });
    connect(tabs_, &QTabBar::tabCloseRequested, this, [this](int index) { pane_.closeTab(index); });
    connect(filter_, &QLineEdit::textChanged, this,
            [this](const QString& text) { pane_.filterChanged(text.toStdString()); });
    connect(star_, &QToolButton::clicked, this, &PaneWidget::favoriteToggled);
    showTabs();
    refreshHeader();
}

void PaneWidget::setFavoriteTest(std::function<bool()> isFavorite)
{
    isFavorite_ = std::move(isFavorite);
    refreshHeader();
}

void PaneWidget::focusFilter()
{
    filter_->setFocus(Qt::ShortcutFocusReason);
    filter_->selectAll();
}

void PaneWidget::refreshHeader()
{
    path_->setText(qtext(DisplayText::displayPath(pane_.directory().native(), L10n::isRightToLeft())));
    star_->setText(isFavorite_ && isFavorite_() ? QStringLiteral("★") : QStringLiteral("☆"));
    // The active pane carries the selection colour in its header; the other one stays plain.
    auto palette = header_->palette();
    const bool active = pane_.isActive();
    palette.setColor(QPalette::Window, active ? palette.color(QPalette::Active, QPalette::Highlight)
                                              : this->palette().color(QPalette::Mid));
    palette.setColor(QPalette::WindowText, active ? palette.color(QPalette::Active, QPalette::HighlightedText)
                                                  : this->palette().color(QPalette::WindowText));
    palette.setColor(QPalette::ButtonText, palette.color(QPalette::WindowText));
    header_->setPalette(palette);
    showSort();
}

void PaneWidget::showRows()
{
    syncing_ = true;
    model_->reset();
    syncing_ = false;
    showSelection();
    showSort();
}

void PaneWidget::showSelection()
{
    syncing_ = true;
    QItemSelection selection;
    const int count = static_cast<int>(pane_.rows().size());
    for (int row = 0; row < count;) {
        if (!pane_.isSelected(row)) {
            ++row;
            continue;
        }
        int last = row;
        while (last + 1 < count && pane_.isSelected(last + 1))
            ++last;
        selection.select(model_->index(row, 0), model_->index(last, FileListModel::columnCount_ - 1));
        row = last + 1;
    }
    auto* selectionModel = list_->selectionModel();
    selectionModel->select(selection, QItemSelectionModel::ClearAndSelect);
    if (pane_.focusRow() >= 0)
        selectionModel->setCurrentIndex(model_->index(pane_.focusRow(), 0), QItemSelectionModel::NoUpdate);
    syncing_ = false;
    status_->setText(qtext(pane_.statusText()));
}

void PaneWidget::takeSelectionFromView()
{
    if (syncing_)
        return;
    std::vector<int> rows;
    for (const auto& index : list_->selectionModel()->selectedRows())
        rows.push_back(index.row());
    pane_.setSelectionFromView(rows, list_->currentIndex().isValid() ? list_->currentIndex().row() : -1);
}

void PaneWidget::showTabs()
{
    syncing_ = true;
    const auto& tabs = pane_.tabs();
    while (tabs_->count() > static_cast<int>(tabs.size()))
        tabs_->removeTab(tabs_->count() - 1);
    for (std::size_t i = 0; i < tabs.size(); ++i) {
        const auto title = tabTitle(tabs[i]->directory);
        if (static_cast<int>(i) >= tabs_->count())
            tabs_->addTab(title);
        else
            tabs_->setTabText(static_cast<int>(i), title);
        tabs_->setTabToolTip(static_cast<int>(i),
                             qtext(DisplayText::displayPath(tabs[i]->directory.native(), L10n::isRightToLeft())));
    }
    tabs_->setCurrentIndex(pane_.activeTabIndex());
    tabs_->setVisible(tabs.size() > 1);
    syncing_ = false;
}

void PaneWidget::showSort()
{
    applyingSortDescriptors_ = true;
    const auto& sort = pane_.activeTab().sort;
    list_->horizontalHeader()->setSortIndicator(FileListModel::columnOf(sort.column),
                                                sort.ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    applyingSortDescriptors_ = false;
}

void PaneWidget::mousePressEvent(QMouseEvent* event)
{
    emit activated();
    QWidget::mousePressEvent(event);
}

bool PaneWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == filter_ && event->type() == QEvent::FocusIn)
        emit activated();
    if (watched == filter_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape) {
            filter_->clear();
            list_->setFocus(Qt::OtherFocusReason);
            return true;
        }
        if (key->key() == Qt::Key_Down || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            list_->setFocus(Qt::OtherFocusReason);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orbisk
