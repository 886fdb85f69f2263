#include "dialogs/ConflictDialog.h"

#include "support/ByteCount.h"
#include "support/L10n.h"

#include <QCheckBox>
#include <QDateTime>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace orbisk {
namespace {

QString qtext(const std::string& text)
{
    return QString::fromStdString(text);
}

std::string lastComponent(const std::filesystem::path& path)
{
    const auto name = path.filename().native();
    return name.empty() ? path.native() : name;
}

// "12.3 MB, modified 03/04/2025 10:15", or "Folder, modified …".
QString describe(const std::optional<ItemStamp>& stamp)
{
    if (!stamp)
        return qtext(translate("Orbisk", "It can no longer be read."));
    const auto modified = QDateTime::fromMSecsSinceEpoch(stamp->modified / 1'000'000);
    // The same short form as the lists: hours and minutes, no seconds.
    const QLocale locale;
    auto time = locale.timeFormat(QLocale::ShortFormat);
    time.remove(QStringLiteral(":ss"));
    const auto when =
        locale.toString(modified, locale.dateFormat(QLocale::ShortFormat) + QLatin1Char(' ') + time).toStdString();
    return stamp->isDirectory ? qtext(L(translate("Orbisk", "Folder, modified %@"), when))
                              : qtext(L(translate("Orbisk", "%@, modified %@"), formatByteCount(stamp->size), when));
}

} // namespace

ConflictDetails ConflictDetails::of(const NameConflict& conflict)
{
    return {conflict, ItemStamp::of(conflict.source), ItemStamp::of(conflict.existing)};
}

ConflictDialog::ConflictDialog(const ConflictDetails& details, QWidget* parent) : QDialog(parent)
{
    const auto& conflict = details.conflict;
    setWindowTitle(qtext(translate("Orbisk", "Name Conflict")));
    auto* layout = new QVBoxLayout(this);

    auto* message = new QLabel;
    message->setWordWrap(true);
    message->setTextFormat(Qt::PlainText);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto font = message->font();
    font.setBold(true);
    message->setFont(font);
    if (conflict.isSameItem) {
        message->setText(qtext(L(translate("Orbisk", "Source and destination are the same item:\n%@\n\nKeep Both "
                                                     "makes a copy with a new name. Nothing is overwritten."),
                                 conflict.existing.native())));
    } else {
        message->setText(qtext(L(translate("Orbisk", "An item named “%@” already exists in “%@”."),
                                 lastComponent(conflict.existing), lastComponent(conflict.existing.parent_path()))));
    }
    layout->addWidget(message);

    if (!conflict.isSameItem) {
        auto* facts = new QGridLayout;
        facts->addWidget(new QLabel(qtext(translate("Orbisk", "Existing:"))), 0, 0);
        facts->addWidget(new QLabel(describe(details.existing)), 0, 1);
        facts->addWidget(new QLabel(qtext(translate("Orbisk", "Incoming:"))), 1, 0);
        facts->addWidget(new QLabel(describe(details.source)), 1, 1);
        facts->setColumnStretch(1, 1);
        layout->addLayout(facts);
    }

    applyToRemaining_ = new QCheckBox(qtext(translate("Orbisk", "Apply to all remaining conflicts")));
    layout->addWidget(applyToRemaining_);

    struct Offer {
        ConflictChoice choice;
        std::string title;
        int row;
    };
    std::vector<Offer> offers = {{ConflictChoice::keepBoth, translate("Orbisk", "Keep Both"), 0},
                                 {ConflictChoice::skip, translate("Orbisk", "Skip"), 0}};
    if (!conflict.isSameItem) {
        offers.push_back({ConflictChoice::replace, translate("Orbisk", "Replace"), 0});
        if (conflict.canMerge)
            offers.push_back({ConflictChoice::merge, translate("Orbisk", "Merge"), 0});
        offers.push_back({ConflictChoice::replaceIfOlder, translate("Orbisk", "Replace if Older"), 1});
        offers.push_back({ConflictChoice::replaceIfDifferent, translate("Orbisk", "Replace if Different"), 1});
        offers.push_back({ConflictChoice::renameExisting, translate("Orbisk", "Rename Existing"), 1});
    }
    offers.push_back({ConflictChoice::cancel, translate("Orbisk", "Cancel"), conflict.isSameItem ? 0 : 1});

    QHBoxLayout* rows[] = {new QHBoxLayout, new QHBoxLayout};
    for (auto* row : rows)
        row->addStretch(1);
    for (const auto& offer : offers) {
        auto* button = new QPushButton(qtext(offer.title));
        button->setObjectName(
            QString::fromLatin1(rawValue(offer.choice).data(), static_cast<qsizetype>(rawValue(offer.choice).size())));
        button->setAutoDefault(false);
        const auto choice = offer.choice;
        connect(button, &QPushButton::clicked, this, [this, choice] { choose(choice); });
        rows[offer.row]->addWidget(button);
    }
    for (auto* row : rows)
        layout->addLayout(row);
    // Return keeps both: nothing is overwritten by accident.
    button(ConflictChoice::keepBoth)->setDefault(true);
    setMinimumWidth(520);
}

QPushButton* ConflictDialog::button(ConflictChoice choice) const
{
    const auto name = rawValue(choice);
    return findChild<QPushButton*>(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
}

void ConflictDialog::choose(ConflictChoice choice)
{
    if (!answered_) {
        answered_ = true;
        emit answered({choice, choice != ConflictChoice::cancel && applyToRemaining_->isChecked()});
    }
    accept();
}

void ConflictDialog::done(int result)
{
    // Escape, the close button or the runner closing it: the safe answer.
    if (!answered_) {
        answered_ = true;
        emit answered({ConflictChoice::cancel, false});
    }
    QDialog::done(result);
}

} // namespace orbisk
