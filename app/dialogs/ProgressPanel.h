// The small window that shows a lasting operation's progress and lets the user cancel it.
#pragma once

#include "operations/OperationProgress.h"

#include <QWidget>

#include <functional>
#include <string>

class QLabel;
class QProgressBar;
class QPushButton;

namespace orbisk {

/// A tool window over its parent window: the title, a detail line, a status line, the current
/// item, a bar (determinate once totals are known) and Cancel, which Escape presses.
class ProgressPanel : public QWidget {
    Q_OBJECT
public:
    ProgressPanel(const std::string& title, const std::string& detail, bool cancellable, QWidget* window);

    /// Shows what progress says.
    void showProgress(const OperationProgress& progress);
    /// Centres the panel horizontally on the window, its top 80 points below the window's top;
    /// slot stacks the panels of several runs below each other.
    void place(int slot);

    /// Called when Cancel is pressed (the button then stays disabled).
    std::function<void()> onCancel;

    [[nodiscard]] QLabel* statusLabel() const { return statusLabel_; }
    [[nodiscard]] QLabel* currentLabel() const { return currentLabel_; }
    [[nodiscard]] QProgressBar* bar() const { return bar_; }
    [[nodiscard]] QPushButton* cancelButton() const { return cancelButton_; }

    /// The status line for progress: "Preparing…", or the items and bytes done of their totals.
    [[nodiscard]] static std::string statusText(const OperationProgress& progress);

protected:
    /// Escape is Cancel.
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* window_;
    QLabel* statusLabel_ = nullptr;
    QLabel* currentLabel_ = nullptr;
    QProgressBar* bar_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace orbisk
