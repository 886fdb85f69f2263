// The table of a pane: Return opens, type-to-select looks at names only, rows select whole.
#pragma once

#include <QTableView>

namespace orbisk {

class FileListView : public QTableView {
    Q_OBJECT
public:
    explicit FileListView(QWidget* parent = nullptr);

    void keyboardSearch(const QString& search) override;

signals:
    /// Return or Enter on the focused row.
    void openRequested(int row);
    void focused();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
};

} // namespace orbisk
