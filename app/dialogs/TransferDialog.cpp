#include "dialogs/TransferDialog.h"

#include "dialogs/TypedPath.h"
#include "support/L10n.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

std::string questionText(TransferDialog::Kind kind, const std::vector<std::filesystem::path>& items)
{
    const bool copy = kind == TransferDialog::Kind::copy;
    if (items.size() == 1) {
        const auto name = items.front().filename().native();
        return copy ? L(translate("Orbisk", "Copy “%@” to:"), name) : L(translate("Orbisk", "Move “%@” to:"), name);
    }
    const auto count = static_cast<long long>(items.size());
    return copy ? L(translate("Orbisk", "Copy %lld items to:"), count)
                : L(translate("Orbisk", "Move %lld items to:"), count);
}

std::string policyTitle(ConflictChoice choice)
{
    switch (choice) {
    case ConflictChoice::skip: return translate("Orbisk", "Skip");
    case ConflictChoice::keepBoth: return translate("Orbisk", "Keep Both");
    case ConflictChoice::cancel: return translate("Orbisk", "Cancel");
    case ConflictChoice::replace: return translate("Orbisk", "Replace");
    case ConflictChoice::replaceIfOlder: return translate("Orbisk", "Replace if Older");
    case ConflictChoice::replaceIfDifferent: return translate("Orbisk", "Replace if Different");
    case ConflictChoice::renameExisting: return translate("Orbisk", "Rename Existing");
    case ConflictChoice::merge: return translate("Orbisk", "Merge");
    }
    return {};
}

} // namespace

const std::vector<ConflictChoice>& TransferDialog::offeredPolicies()
{
    static const std::vector<ConflictChoice> choices = {
        ConflictChoice::keepBoth,
        ConflictChoice::skip,
        ConflictChoice::replace,
        ConflictChoice::replaceIfOlder,
        ConflictChoice::replaceIfDifferent,
        ConflictChoice::renameExisting,
    };
    return choices;
}

TransferDialog::TransferDialog(Kind kind, const std::vector<std::filesystem::path>& items,
                               const std::filesystem::path& destination, std::optional<ConflictChoice> policy,
                               QWidget* parent)
    : QDialog(parent), prefilled_(destination.native())
{
    const bool copy = kind == Kind::copy;
    setWindowTitle(qtext(copy ? translate("Orbisk", "Copy") : translate("Orbisk", "Move")));

    question_ = new QLabel(qtext(questionText(kind, items)));
    question_->setTextFormat(Qt::PlainText);
    field_ = new QLineEdit(TypedPath::shown(prefilled_));
    field_->setMinimumWidth(460);
    field_->setToolTip(qtext(translate("Orbisk", "A folder, a new name for one item, or a mask such as *.bak")));

    policyBox_ = new QComboBox;
    policyBox_->addItem(qtext(translate("Orbisk", "Ask what to do")));
    for (const auto choice : offeredPolicies()) {
        policyBox_->addItem(qtext(policyTitle(choice)), QString::fromLatin1(rawValue(choice).data()));
        if (policy == choice)
            policyBox_->setCurrentIndex(policyBox_->count() - 1);
    }

    auto* form = new QFormLayout;
    form->addRow(qtext(translate("Orbisk", "If an item already exists:")), policyBox_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)
        ->setText(qtext(copy ? translate("Orbisk", "Copy") : translate("Orbisk", "Move")));
    buttons->button(QDialogButtonBox::Cancel)->setText(qtext(translate("Orbisk", "Cancel")));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(question_);
    layout->addWidget(field_);
    layout->addLayout(form);
    layout->addWidget(buttons);
    field_->setFocus();
    field_->selectAll();
}

std::string TransferDialog::destinationText() const
{
    return TypedPath::bytes(prefilled_, field_->text());
}

std::optional<ConflictChoice> TransferDialog::policy() const
{
    const auto word = policyBox_->currentData().toString().toStdString();
    return conflictChoiceFromRaw(word);
}

} // namespace orbisk
