#include "tools/FindWindow.h"

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"

#include <QCheckBox>
#include <QDateTime>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orbisk {
namespace {

enum Column { nameColumn, folderColumn, sizeColumn, dateColumn, lineColumn };
constexpr int indexRole = Qt::UserRole + 1;

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

QString dateText(const std::optional<FileItem::Date>& date)
{
    if (!date)
        return {};
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(date->time_since_epoch());
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds.count()), QLocale::ShortFormat);
}

} // namespace

FindWindow::FindWindow(const std::filesystem::path& folder, QWidget* parent) : QDialog(parent), folder_(folder)
{
    setWindowTitle(qtext(L(translate("Orbisk", "Find in “%@”"),
                           folder.filename().empty() ? folder.native() : folder.filename().native())));
    setModal(false);
    pattern_ = new QLineEdit(this);
    pattern_->setPlaceholderText(qtext(translate("Orbisk", "Name contains, or pattern like *.pdf;*.docx")));
    containing_ = new QLineEdit(this);
    containing_->setPlaceholderText(qtext(translate("Orbisk", "Text inside the file (optional)")));
    hidden_ = new QCheckBox(qtext(translate("Orbisk", "Include hidden files")), this);
    regex_ = new QCheckBox(qtext(translate("Orbisk", "Regular expression")), this);
    caseSensitive_ = new QCheckBox(qtext(translate("Orbisk", "Match case")), this);
    findButton_ = new QPushButton(qtext(translate("Orbisk", "Find")), this);
    // Return in a field starts a search and never doubles as a click on Find/Stop.
    findButton_->setAutoDefault(false);

    auto* form = new QFormLayout;
    form->addRow(qtext(translate("Orbisk", "Look in:")),
                 new QLabel(qtext(DisplayText::displayPath(folder.native(), L10n::isRightToLeft())), this));
    form->addRow(qtext(translate("Orbisk", "Name:")), pattern_);
    auto* containingRow = new QHBoxLayout;
    containingRow->addWidget(containing_, 1);
    containingRow->addWidget(regex_);
    containingRow->addWidget(caseSensitive_);
    form->addRow(qtext(translate("Orbisk", "Containing:")), containingRow);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(hidden_);
    buttons->addStretch(1);
    buttons->addWidget(findButton_);

    list_ = new QTreeWidget(this);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setHeaderLabels({qtext(translate("Orbisk", "Name")), qtext(translate("Orbisk", "Folder")),
                            qtext(translate("Orbisk", "Size")), qtext(translate("Orbisk", "Date Modified")),
                            qtext(translate("Orbisk", "Line"))});
    list_->header()->resizeSection(nameColumn, 200);
    list_->header()->resizeSection(folderColumn, 260);
    list_->header()->resizeSection(sizeColumn, 80);
    list_->header()->resizeSection(dateColumn, 150);
    list_->installEventFilter(this);
    summary_ = new QLabel(this);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    layout->addWidget(list_, 1);
    layout->addWidget(summary_);
    resize(860, 520);

    connect(findButton_, &QPushButton::clicked, this, [this] { searching_ ? stop() : start(); });
    connect(pattern_, &QLineEdit::returnPressed, this, &FindWindow::start);
    connect(containing_, &QLineEdit::returnPressed, this, &FindWindow::start);
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this] { chooseCurrent(); });
}

FindWindow::~FindWindow()
{
    if (token_)
        token_->cancel();
}

void FindWindow::start()
{
    stop();
    if (worker_.joinable())
        worker_.join();
    const int generation = ++generation_;
    results_.clear();
    list_->clear();
    FileSearchOptions options;
    options.pattern = pattern_->text().toStdString();
    options.containing = containing_->text().toStdString();
    options.includeHidden = hidden_->isChecked();
    options.regularExpression = regex_->isChecked();
    options.caseSensitive = caseSensitive_->isChecked();
    options.maxResults = resultLimit;
    searching_ = true;
    findButton_->setText(qtext(translate("Orbisk", "Stop")));
    summary_->setText(qtext(L(translate("Orbisk", "Searching… %lld found"), 0)));
    token_ = std::make_shared<CancellationToken>();
    worker_ = std::jthread([this, generation, options, root = folder_, token = token_] {
        const auto summary = FileSearch::run(root, options, *token, [&](std::vector<FoundItem> batch) {
            auto shared = std::make_shared<std::vector<FoundItem>>(std::move(batch));
            QMetaObject::invokeMethod(
                this, [this, generation, shared] { addBatch(generation, std::move(*shared)); }, Qt::QueuedConnection);
        });
        if (summary)
            QMetaObject::invokeMethod(
                this, [this, generation, s = *summary] { finished(generation, s); }, Qt::QueuedConnection);
        else
            QMetaObject::invokeMethod(
                this, [this, generation, e = summary.error()] { failed(generation, e); }, Qt::QueuedConnection);
    });
}

void FindWindow::stop()
{
    if (token_)
        token_->cancel();
}

void FindWindow::addBatch(int generation, std::vector<FoundItem> batch)
{
    if (generation != generation_)
        return;
    QList<QTreeWidgetItem*> rows;
    for (auto& found : batch) {
        const auto& item = found.item;
        auto* row = new QTreeWidgetItem;
        row->setData(nameColumn, indexRole, static_cast<qulonglong>(results_.size()));
        row->setText(nameColumn, qtext(DisplayText::displayName(item.name())));
        row->setText(folderColumn, qtext(DisplayText::displayPath(std::string(item.folder()), L10n::isRightToLeft())));
        if (item.size && !item.isDirectory)
            row->setText(sizeColumn, qtext(formatByteCount(*item.size)));
        row->setTextAlignment(sizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setText(dateColumn, dateText(item.modificationDate));
        if (found.content)
            row->setText(lineColumn, QString::number(found.content->lineNumber) + QStringLiteral(": ") +
                                         qtext(DisplayText::visible(found.content->line)));
        rows.append(row);
        results_.push_back(std::move(found));
    }
    list_->addTopLevelItems(rows);
    if (list_->currentItem() == nullptr && list_->topLevelItemCount() > 0)
        list_->setCurrentItem(list_->topLevelItem(0));
    summary_->setText(qtext(L(translate("Orbisk", "Searching… %lld found"), static_cast<long long>(results_.size()))));
}

void FindWindow::finished(int generation, FileSearchSummary summary)
{
    if (generation != generation_)
        return;
    searching_ = false;
    findButton_->setText(qtext(translate("Orbisk", "Find")));
    QString text = qtext(L(translate("Orbisk", "%lld found in %@ items"), summary.matched,
                           QLocale().toString(static_cast<qlonglong>(summary.scanned)).toStdString()));
    if (summary.truncated)
        text += QLatin1Char(' ') + qtext(translate("Orbisk", "(result limit reached)"));
    if (summary.cancelled)
        text += QLatin1Char(' ') + qtext(translate("Orbisk", "(stopped)"));
    if (summary.unreadableFolders > 0)
        text += QStringLiteral(" · ") +
                qtext(L(translate("Orbisk", "%lld folders couldn’t be read"), summary.unreadableFolders));
    summary_->setText(text);
}

void FindWindow::failed(int generation, ExpressionError error)
{
    if (generation != generation_)
        return;
    searching_ = false;
    findButton_->setText(qtext(translate("Orbisk", "Find")));
    summary_->setText(qtext(L(translate("Orbisk", "The regular expression isn’t valid (%@)."), error.reason)));
}

QString FindWindow::summaryText() const
{
    return summary_->text();
}

void FindWindow::chooseCurrent()
{
    const auto* row = list_->currentItem();
    if (row == nullptr)
        return;
    const auto index = row->data(nameColumn, indexRole).toULongLong();
    if (index < results_.size())
        emit showRequested(results_[index].item.url());
}

bool FindWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            chooseCurrent();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace orbisk
