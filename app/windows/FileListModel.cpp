#include "windows/FileListModel.h"

#include "panes/KindTexts.h"
#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/Translate.h"

#include <QApplication>
#include <QDateTime>
#include <QLocale>
#include <QStyle>

namespace orbisk {
namespace {

// The locale's short date with hours and minutes: seconds only widen the column.
const QString& dateFormat()
{
    static const QString format = [] {
        const QLocale locale;
        auto time = locale.timeFormat(QLocale::ShortFormat);
        time.remove(QStringLiteral(":ss"));
        return locale.dateFormat(QLocale::ShortFormat) + QLatin1Char(' ') + time;
    }();
    return format;
}

// Every cell is its own isolated run, so that "17 bytes" or ".profile" keep their order in a
// right-to-left window and a Hebrew name keeps its own in a left-to-right one.
QString isolated(const QString& text)
{
    return QChar(0x2068) + text + QChar(0x2069);
}

} // namespace

FileListModel::FileListModel(const PaneRows& rows, KindTexts& kinds, QObject* parent)
    : QAbstractTableModel(parent), rows_(rows), kinds_(kinds)
{
}

void FileListModel::reset()
{
    beginResetModel();
    endResetModel();
}

void FileListModel::sizesChanged()
{
    if (!rows_.empty())
        emit dataChanged(index(0, size), index(static_cast<int>(rows_.size()) - 1, size), {Qt::DisplayRole});
}

SortColumn FileListModel::sortColumn(int column)
{
    switch (column) {
    case size: return SortColumn::size;
    case date: return SortColumn::date;
    case kind: return SortColumn::kind;
    default: return SortColumn::name;
    }
}

int FileListModel::columnOf(SortColumn column)
{
    switch (column) {
    case SortColumn::size: return size;
    case SortColumn::date: return date;
    case SortColumn::kind: return kind;
    case SortColumn::name: break;
    }
    return name;
}

int FileListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columnCount_;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= rows_.size())
        return {};
    const auto& item = rows_[static_cast<std::size_t>(index.row())];
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case name: return isolated(QString::fromStdString(DisplayText::displayName(item.name())));
        case size:
            if (item.isDirectory && folderSizeText_) {
                if (const auto text = folderSizeText_(item))
                    return isolated(QString::fromStdString(*text));
            }
            if (item.isDirectory || !item.size)
                return QStringLiteral("—");
            return isolated(QString::fromStdString(formatByteCount(*item.size)));
        case date: {
            if (!item.modificationDate)
                return {};
            const auto milliseconds =
                std::chrono::duration_cast<std::chrono::milliseconds>(item.modificationDate->time_since_epoch());
            return isolated(QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds.count()), dateFormat()));
        }
        case kind: return isolated(QString::fromStdString(kinds_.describe(item)));
        default: return {};
        }
    }
    if (role == Qt::DecorationRole && index.column() == name) {
        const auto* style = QApplication::style();
        if (item.isDirectory)
            return style->standardIcon(item.isSymbolicLink ? QStyle::SP_DirLinkIcon : QStyle::SP_DirIcon);
        return style->standardIcon(item.isSymbolicLink ? QStyle::SP_FileLinkIcon : QStyle::SP_FileIcon);
    }
    if (role == Qt::TextAlignmentRole && index.column() == size)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::ForegroundRole && item.isHidden)
        return QApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    return {};
}

QModelIndexList FileListModel::match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                     Qt::MatchFlags flags) const
{
    // Type-to-select asks for names that start with what was typed; answer from the names
    // themselves, without the isolation marks that the displayed text carries.
    const bool startsWith = (flags & Qt::MatchTypeMask) == Qt::MatchStartsWith;
    if (role != Qt::DisplayRole || start.column() != name || !startsWith || rows_.empty())
        return QAbstractTableModel::match(start, role, value, hits, flags);
    const auto needle = value.toString();
    const auto sensitivity = flags & Qt::MatchCaseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const auto count = static_cast<int>(rows_.size());
    const int candidates = flags & Qt::MatchWrap ? count : count - start.row();
    QModelIndexList found;
    for (int i = 0; i < candidates && (hits == -1 || found.size() < hits); ++i) {
        const int row = (start.row() + i) % count;
        const auto text = QString::fromStdString(DisplayText::displayName(rows_[static_cast<std::size_t>(row)].name()));
        if (text.startsWith(needle, sensitivity))
            found.append(index(row, name));
    }
    return found;
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= rows_.size())
        return Qt::NoItemFlags;
    if (rows_[static_cast<std::size_t>(index.row())].isParentLink)
        return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case name: return QString::fromStdString(translate("Orbisk", "Name"));
    case size: return QString::fromStdString(translate("Orbisk", "Size"));
    case date: return QString::fromStdString(translate("Orbisk", "Date Modified"));
    case kind: return QString::fromStdString(translate("Orbisk", "Kind"));
    default: return {};
    }
}

} // namespace orbisk
