// The find (and, for the editor, replace) bar at the bottom of the viewer and editor windows.
#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace orbisk {

class FindBar : public QWidget {
    Q_OBJECT
public:
    explicit FindBar(bool withReplace, QWidget* parent = nullptr);

    /// Shows the bar with the find field focused and its text selected.
    void open();
    [[nodiscard]] QString findText() const;
    [[nodiscard]] QString replaceText() const;
    [[nodiscard]] bool matchCase() const;
    /// A short result next to the fields ("Not found"); empty to clear it.
    void setMessage(const QString& message);
    [[nodiscard]] QString message() const;
    [[nodiscard]] QLineEdit* findField() const { return find_; }
    [[nodiscard]] QLineEdit* replaceField() const { return replace_; }

signals:
    void findNext();
    void replaceOne();
    void replaceAll();
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLineEdit* find_;
    QLineEdit* replace_ = nullptr;
    QCheckBox* matchCase_;
    QLabel* message_;
};

} // namespace orbisk
