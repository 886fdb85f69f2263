// Help › Keyboard Shortcuts: the catalog with a search field.
#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QTreeWidget;

namespace orbisk {

class ShortcutsDialog : public QDialog {
    Q_OBJECT
public:
    explicit ShortcutsDialog(QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* searchField() const { return search_; }
    [[nodiscard]] QTreeWidget* list() const { return list_; }
    [[nodiscard]] QLabel* emptyNotice() const { return empty_; }

private:
    void showMatches(const QString& query);
    QLineEdit* search_;
    QTreeWidget* list_;
    QLabel* empty_;
};

} // namespace orbisk
