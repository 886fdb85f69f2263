#include "windows/FunctionKeyBar.h"

#include <QAction>
#include <QHBoxLayout>
#include <QPushButton>

namespace orbisk {

FunctionKeyBar::FunctionKeyBar(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
}

void FunctionKeyBar::addKey(const QString& key, const QString& label, QAction* action)
{
    auto* button = new QPushButton(key + QLatin1Char(' ') + label, this);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFlat(false);
    button->setEnabled(action->isEnabled());
    connect(button, &QPushButton::clicked, action, &QAction::trigger);
    connect(action, &QAction::enabledChanged, button, &QPushButton::setEnabled);
    layout()->addWidget(button);
}

} // namespace orbisk
