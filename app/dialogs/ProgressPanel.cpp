#include "dialogs/ProgressPanel.h"

#include "support/ByteCount.h"
#include "support/DisplayText.h"
#include "support/L10n.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

ProgressPanel::ProgressPanel(const std::string& title, const std::string& detail, bool cancellable, QWidget* window)
    : QWidget(window, Qt::Tool), window_(window)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(qtext(title));
    // A raised frame keeps the panel apart from the window even where no window manager draws one.
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* frame = new QFrame;
    frame->setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    frame->setLineWidth(1);
    outer->addWidget(frame);
    auto* layout = new QVBoxLayout(frame);
    auto* heading = new QLabel(qtext(title));
    heading->setTextFormat(Qt::PlainText);
    auto font = heading->font();
    font.setBold(true);
    heading->setFont(font);
    layout->addWidget(heading);
    if (!detail.empty()) {
        auto* second = new QLabel(qtext(detail));
        second->setTextFormat(Qt::PlainText);
        layout->addWidget(second);
    }
    bar_ = new QProgressBar;
    bar_->setTextVisible(false);
    layout->addWidget(bar_);
    statusLabel_ = new QLabel;
    statusLabel_->setTextFormat(Qt::PlainText);
    layout->addWidget(statusLabel_);
    currentLabel_ = new QLabel;
    currentLabel_->setTextFormat(Qt::PlainText);
    currentLabel_->setMinimumWidth(0);
    currentLabel_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(currentLabel_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    cancelButton_ = new QPushButton(qtext(translate("Orbisk", "Cancel")));
    cancelButton_->setVisible(cancellable);
    connect(cancelButton_, &QPushButton::clicked, this, [this] {
        cancelButton_->setEnabled(false);
        statusLabel_->setText(qtext(translate("Orbisk", "Cancelling…")));
        if (onCancel)
            onCancel();
    });
    buttons->addWidget(cancelButton_);
    layout->addLayout(buttons);
    setFixedWidth(440);
}

std::string ProgressPanel::statusText(const OperationProgress& progress)
{
    if (progress.phase == OperationProgress::Phase::preparing)
        return translate("Orbisk", "Preparing…");
    if (progress.totalItems && progress.totalBytes && *progress.totalBytes > 0)
        return L(translate("Orbisk", "%lld of %lld items — %@ of %@"), progress.completedItems, *progress.totalItems,
                 formatByteCount(progress.completedBytes), formatByteCount(*progress.totalBytes));
    if (progress.totalItems)
        return L(translate("Orbisk", "%lld of %lld items"), progress.completedItems, *progress.totalItems);
    return L(translate("Orbisk", "%lld items done"), progress.completedItems);
}

void ProgressPanel::showProgress(const OperationProgress& progress)
{
    if (cancelButton_->isEnabled())
        statusLabel_->setText(qtext(statusText(progress)));
    QString current;
    if (progress.currentPath) {
        const std::filesystem::path path(*progress.currentPath);
        const auto name = path.filename().native();
        current = qtext(DisplayText::displayName(name.empty() ? path.native() : name));
    }
    currentLabel_->setText(currentLabel_->fontMetrics().elidedText(current, Qt::ElideMiddle, currentLabel_->width()));
    currentLabel_->setToolTip(current);

    // Bytes say most about a copy; items are the measure when nothing has a size.
    constexpr int steps = 1000;
    if (progress.phase != OperationProgress::Phase::preparing && progress.totalBytes && *progress.totalBytes > 0) {
        bar_->setRange(0, steps);
        bar_->setValue(static_cast<int>(
            std::clamp<std::int64_t>(progress.completedBytes * steps / *progress.totalBytes, 0, steps)));
    } else if (progress.phase != OperationProgress::Phase::preparing && progress.totalItems &&
               *progress.totalItems > 0) {
        bar_->setRange(0, steps);
        bar_->setValue(static_cast<int>(
            std::clamp<std::int64_t>(progress.completedItems * steps / *progress.totalItems, 0, steps)));
    } else {
        bar_->setRange(0, 0); // no totals yet: a busy bar
    }
}

void ProgressPanel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        if (!cancelButton_->isHidden() && cancelButton_->isEnabled())
            cancelButton_->click();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void ProgressPanel::place(int slot)
{
    adjustSize();
    if (!window_)
        return;
    const auto frame = window_->frameGeometry();
    const int x = frame.left() + (frame.width() - width()) / 2;
    const int y = frame.top() + 80 + slot * (height() + 8);
    move(x, y);
}

} // namespace orbisk
