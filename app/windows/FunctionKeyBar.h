// The row of function-key buttons at the bottom of the window; each one triggers its command.
#pragma once

#include <QWidget>

class QAction;

namespace orbisk {

class FunctionKeyBar : public QWidget {
    Q_OBJECT
public:
    explicit FunctionKeyBar(QWidget* parent = nullptr);

    /// Adds a button "F5 Copy" that triggers action and follows its enabled state.
    void addKey(const QString& key, const QString& label, QAction* action);
};

} // namespace orbisk
