#include "tools/BreakdownView.h"

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"
#include "support/Paths.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace orbisk {
namespace {

enum Column { nameColumn, shareColumn, sizeColumn, itemsColumn };
constexpr int shareRole = Qt::UserRole + 1;
constexpr int pathRole = Qt::UserRole + 2;

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

/// The share column: a bar as long as the child's share of the folder, and the percentage.
class ShareBar : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::paint(painter, option, QModelIndex()); // background and selection only
        const double share = index.data(shareRole).toDouble();
        const QRect area = option.rect.adjusted(4, 4, -4, -4);
        QRect bar = area;
        bar.setWidth(static_cast<int>(area.width() * std::clamp(share, 0.0, 1.0)));
        painter->save();
        painter->setPen(Qt::NoPen);
        painter->setBrush(option.palette.color(QPalette::Mid));
        painter->drawRect(area);
        painter->setBrush(option.palette.color(QPalette::Highlight).lighter(120));
        painter->drawRect(bar);
        painter->setPen(option.palette.color(QPalette::Text));
        painter->drawText(area, Qt::AlignCenter, QLocale().toString(share * 100.0, 'f', 1) + QStringLiteral(" %"));
        painter->restore();
    }
};

} // namespace

BreakdownView::BreakdownView(QWidget* parent) : QWidget(parent)
{
    title_ = new QLabel(this);
    title_->setContentsMargins(6, 4, 6, 4);
    title_->setAutoFillBackground(true);
    title_->setBackgroundRole(QPalette::Mid);
    list_ = new QTreeWidget(this);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setHeaderLabels({qtext(translate("Orbisk", "Name")), qtext(translate("Orbisk", "Share")),
                            qtext(translate("Orbisk", "Size")), qtext(translate("Orbisk", "Items"))});
    list_->setItemDelegateForColumn(shareColumn, new ShareBar(list_));
    list_->header()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    list_->header()->setStretchLastSection(false);
    list_->header()->resizeSection(shareColumn, 140);
    list_->header()->resizeSection(sizeColumn, 90);
    list_->header()->resizeSection(itemsColumn, 90);
    list_->installEventFilter(this);
    status_ = new QLabel(this);
    status_->setWordWrap(true);
    status_->setContentsMargins(6, 2, 6, 2);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title_);
    layout->addWidget(list_, 1);
    layout->addWidget(status_);
    connect(list_, &QTreeWidget::itemActivated, this, [this] { openCurrent(); });
    setFocusProxy(list_);
}

BreakdownView::~BreakdownView()
{
    stopWorker();
}

void BreakdownView::stopMeasuring()
{
    if (token_)
        token_->cancel();
}

void BreakdownView::stopWorker()
{
    if (token_)
        token_->cancel();
    if (worker_.joinable())
        worker_.join();
}

void BreakdownView::showFolder(const std::filesystem::path& folder)
{
    if (folder == folder_ && token_)
        return;
    stopWorker();
    if (!focusAfterLoad_.empty() && Paths::parentFolder(focusAfterLoad_) != folder)
        focusAfterLoad_.clear();
    folder_ = folder;
    const int generation = ++generation_;
    report_ = FolderBreakdown::Report{};
    report_.folder = folder;
    title_->setText(qtext(L(translate("Orbisk", "Breakdown of %@"), folder.native())));
    present();

    token_ = std::make_shared<CancellationToken>();
    worker_ = std::jthread([this, folder, generation, token = token_, mailbox = mailbox_] {
        auto last = std::chrono::steady_clock::time_point{};
        const auto deliver = [&](const FolderBreakdown::Report& report, bool force) {
            // Ten pictures a second are plenty; the last one always goes.
            const auto now = std::chrono::steady_clock::now();
            if (!force && now - last < std::chrono::milliseconds(100))
                return;
            last = now;
            std::lock_guard guard(mailbox->lock);
            mailbox->report = report;
            mailbox->generation = generation;
            if (!std::exchange(mailbox->posted, true))
                QMetaObject::invokeMethod(
                    this, [this, generation] { takeReport(generation); }, Qt::QueuedConnection);
        };
        const auto report = FolderBreakdown::compute(
            folder, *token, [&](const FolderBreakdown::Report& growing) { deliver(growing, growing.isComplete); });
        if (!token->isCancelled())
            deliver(report, true);
    });
}

void BreakdownView::takeReport(int generation)
{
    std::optional<FolderBreakdown::Report> report;
    int reportGeneration = 0;
    {
        std::lock_guard guard(mailbox_->lock);
        report = std::exchange(mailbox_->report, std::nullopt);
        reportGeneration = mailbox_->generation;
        mailbox_->posted = false;
    }
    if (!report || reportGeneration != generation_ || generation != generation_)
        return;
    report_ = std::move(*report);
    present();
}

QString BreakdownView::statusText() const
{
    return status_->text();
}

void BreakdownView::present()
{
    auto current = list_->currentItem() ? list_->currentItem()->data(nameColumn, pathRole) : QVariant();
    if (!focusAfterLoad_.empty()) {
        // Coming up from a subfolder: it keeps the cursor once it is listed.
        const auto& bytes = focusAfterLoad_.native();
        current = QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
    list_->clear();
    auto entries = report_.entries;
    std::ranges::stable_sort(entries, std::ranges::greater{}, [](const auto& e) { return e.size.bytes; });
    QList<QTreeWidgetItem*> rows;
    QTreeWidgetItem* focus = nullptr;
    bool otherVolume = false;
    for (const auto& entry : entries) {
        auto* row = new QTreeWidgetItem;
        const auto& bytes = entry.url.native();
        const QByteArray path(bytes.data(), static_cast<qsizetype>(bytes.size()));
        row->setData(nameColumn, pathRole, path);
        row->setText(nameColumn, qtext(DisplayText::displayName(entry.name)) +
                                     (entry.isDirectory ? QStringLiteral("/") : QString()));
        const auto* style = QApplication::style();
        row->setIcon(nameColumn, style->standardIcon(entry.isSymbolicLink ? QStyle::SP_FileLinkIcon
                                                     : entry.isDirectory  ? QStyle::SP_DirIcon
                                                                          : QStyle::SP_FileIcon));
        row->setData(shareColumn, shareRole, report_.share(entry));
        if (entry.isOtherVolume) {
            otherVolume = true;
            row->setText(sizeColumn, QStringLiteral("—"));
            row->setToolTip(nameColumn,
                            qtext(translate("Orbisk", "Another volume is mounted here; its contents aren’t counted.")));
        } else if (!entry.isComplete && entry.size.folders == 0) {
            row->setText(sizeColumn, QStringLiteral("…")); // waiting for its turn
        } else {
            row->setText(sizeColumn, qtext(formatByteCount(entry.size.bytes)) +
                                         (entry.isComplete ? QString() : QStringLiteral("…")));
        }
        // A folder's own count includes itself; it is known once its walk has begun.
        if (entry.isDirectory && !entry.isOtherVolume && entry.size.folders > 0)
            row->setText(itemsColumn,
                         qtext(L(translate("Orbisk", "%lld items"), entry.size.files + entry.size.folders - 1)));
        row->setTextAlignment(sizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setTextAlignment(itemsColumn, Qt::AlignRight | Qt::AlignVCenter);
        if (entry.isHidden)
            for (int column = 0; column < 4; ++column)
                row->setForeground(column, palette().brush(QPalette::Disabled, QPalette::Text));
        if (current.isValid() && current.toByteArray() == path) {
            focus = row;
            focusAfterLoad_.clear();
        }
        rows.append(row);
    }
    list_->addTopLevelItems(rows);
    if (focus == nullptr && !rows.isEmpty())
        focus = rows.front();
    if (focus != nullptr)
        list_->setCurrentItem(focus);

    QStringList lines;
    if (report_.readError) {
        lines << qtext(translate("Orbisk", "This folder couldn’t be read."));
    } else if (!report_.isComplete) {
        lines << qtext(L(translate("Orbisk", "Measuring… %@ so far (%lld of %lld folders)"),
                         formatByteCount(report_.totalBytes()), report_.measuredFolders(), report_.foldersToMeasure()));
    } else {
        lines << qtext(L(translate("Orbisk", "%@ in %lld files and %lld folders"),
                         formatByteCount(report_.totalBytes()), report_.totalFiles(), report_.totalFolders()));
        if (report_.unreadable() > 0)
            lines << qtext(
                L(translate("Orbisk", "%lld items couldn’t be read and aren’t counted."), report_.unreadable()));
        // Linux keeps no file contents elsewhere, so cloudOnly stays 0 and has no sentence here.
    }
    if (otherVolume)
        lines << qtext(translate("Orbisk", "Another volume is mounted here; its contents aren’t counted."));
    status_->setText(lines.join(QLatin1Char('\n')));
}

void BreakdownView::openCurrent()
{
    const auto* row = list_->currentItem();
    if (row == nullptr)
        return;
    const auto bytes = row->data(nameColumn, pathRole).toByteArray();
    const std::filesystem::path path(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    const auto found = std::ranges::find(report_.entries, path, &FolderBreakdown::Entry::url);
    if (found != report_.entries.end() && found->isDirectory && !found->isOtherVolume)
        showFolder(path);
}

bool BreakdownView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == list_ && event->type() == QEvent::ShortcutOverride) {
        // These keys are the window's shortcuts elsewhere (Open, Enclosing Folder, Clear Filter);
        // in the breakdown they are its own.
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool altUp = key->key() == Qt::Key_Up && key->modifiers() == Qt::AltModifier;
        if (altUp || key->key() == Qt::Key_Escape || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            event->accept();
            return true;
        }
    }
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape) {
            emit closeRequested();
            return true;
        }
        if (key->key() == Qt::Key_Up && key->modifiers() == Qt::AltModifier) {
            if (folder_ != "/") {
                focusAfterLoad_ = folder_;
                showFolder(Paths::parentFolder(folder_));
            }
            return true;
        }
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            openCurrent();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orbisk
