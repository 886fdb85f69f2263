// The list of a pane as Qt's views see it: a thin table over the pane's rows, no copies.
#pragma once

#include "files/FileItem.h"
#include "files/SortSpec.h"
#include "panes/PaneRows.h"

#include <QAbstractTableModel>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {

class KindTexts;

class FileListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { name, size, date, kind, columnCount_ };

    FileListModel(const PaneRows& rows, KindTexts& kinds, QObject* parent = nullptr);

    /// What the Size column shows for a folder instead of "—" (a measured size), or nothing.
    using FolderSizeText = std::function<std::optional<std::string>(const FileItem&)>;
    void setFolderSizeText(FolderSizeText text) { folderSizeText_ = std::move(text); }
    /// The Size column changed for some folders: redraw it without starting the view over.
    void sizesChanged();

    /// The rows were replaced: every view starts over.
    void reset();

    [[nodiscard]] static SortColumn sortColumn(int column);
    [[nodiscard]] static int columnOf(SortColumn column);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                          Qt::MatchFlags flags) const override;
    /// The ".." row can hold the focus but is never part of a selection.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const PaneRows& rows_;
    KindTexts& kinds_;
    FolderSizeText folderSizeText_;
};

} // namespace orbisk
