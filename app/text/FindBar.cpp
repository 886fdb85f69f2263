#include "text/FindBar.h"

#include "support/Translate.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

FindBar::FindBar(bool withReplace, QWidget* parent)
    : QWidget(parent), find_(new QLineEdit(this)), matchCase_(new QCheckBox(this)), message_(new QLabel(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    find_->setPlaceholderText(qtext(translate("Orbisk", "Find")));
    find_->setClearButtonEnabled(true);
    layout->addWidget(find_, 2);
    auto* next = new QPushButton(qtext(translate("Orbisk", "Find Next")), this);
    layout->addWidget(next);
    connect(next, &QPushButton::clicked, this, &FindBar::findNext);
    connect(find_, &QLineEdit::returnPressed, this, &FindBar::findNext);
    if (withReplace) {
        replace_ = new QLineEdit(this);
        replace_->setPlaceholderText(qtext(translate("Orbisk", "Replace with")));
        layout->addWidget(replace_, 2);
        auto* one = new QPushButton(qtext(translate("Orbisk", "Replace")), this);
        auto* all = new QPushButton(qtext(translate("Orbisk", "Replace All")), this);
        layout->addWidget(one);
        layout->addWidget(all);
        connect(one, &QPushButton::clicked, this, &FindBar::replaceOne);
        connect(all, &QPushButton::clicked, this, &FindBar::replaceAll);
        connect(replace_, &QLineEdit::returnPressed, this, &FindBar::replaceOne);
    }
    matchCase_->setText(qtext(translate("Orbisk", "Match case")));
    layout->addWidget(matchCase_);
    layout->addWidget(message_, 1);
    connect(find_, &QLineEdit::textChanged, this, [this] { message_->clear(); });
    hide();
}

void FindBar::open()
{
    show();
    find_->setFocus(Qt::ShortcutFocusReason);
    find_->selectAll();
}

QString FindBar::findText() const
{
    return find_->text();
}

QString FindBar::replaceText() const
{
    return replace_ ? replace_->text() : QString();
}

bool FindBar::matchCase() const
{
    return matchCase_->isChecked();
}

void FindBar::setMessage(const QString& message)
{
    message_->setText(message);
}

QString FindBar::message() const
{
    return message_->text();
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        emit closed();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace orbisk
