#include "dialogs/NamePrompt.h"

#include "dialogs/TypedPath.h"
#include "operations/NameGenerator.h"
#include "support/Translate.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orbisk {

NamePrompt::NamePrompt(const std::string& title, const std::string& message, const std::string& proposal,
                       const std::string& confirm, bool selectStem, QWidget* parent)
    : QDialog(parent), proposal_(proposal)
{
    setWindowTitle(QString::fromStdString(title));
    auto* label = new QLabel(QString::fromStdString(message));
    label->setTextFormat(Qt::PlainText);
    field_ = new QLineEdit(TypedPath::shown(proposal));
    field_->setMinimumWidth(360);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    confirm_ = buttons->button(QDialogButtonBox::Ok);
    confirm_->setText(QString::fromStdString(confirm));
    buttons->button(QDialogButtonBox::Cancel)->setText(QString::fromStdString(translate("Orbisk", "Cancel")));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(field_, &QLineEdit::textChanged, this,
            [this](const QString& text) { confirm_->setEnabled(!text.trimmed().isEmpty()); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(field_);
    layout->addWidget(buttons);

    field_->setFocus();
    const auto split = NameGenerator::splitExtension(proposal, false);
    if (selectStem && split.extension)
        field_->setSelection(0, static_cast<int>(TypedPath::shown(split.stem).size()));
    else
        field_->selectAll();
}

std::string NamePrompt::name() const
{
    return TypedPath::bytes(proposal_, field_->text());
}

} // namespace orbisk
