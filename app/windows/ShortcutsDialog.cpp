#include "windows/ShortcutsDialog.h"

#include "shortcuts/ShortcutCatalog.h"
#include "support/L10n.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orbisk {

ShortcutsDialog::ShortcutsDialog(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QString::fromStdString(translate("Orbisk", "Keyboard Shortcuts")));
    search_ = new QLineEdit(this);
    search_->setPlaceholderText(QString::fromStdString(translate("Orbisk", "Search shortcuts")));
    search_->setClearButtonEnabled(true);
    list_ = new QTreeWidget(this);
    list_->setColumnCount(2);
    list_->setHeaderHidden(true);
    list_->setRootIsDecorated(false);
    list_->setSelectionMode(QAbstractItemView::NoSelection);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    empty_ = new QLabel(this);
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search_);
    layout->addWidget(list_, 1);
    layout->addWidget(empty_, 1);
    connect(search_, &QLineEdit::textChanged, this, &ShortcutsDialog::showMatches);
    resize(720, 640);
    showMatches({});
}

void ShortcutsDialog::showMatches(const QString& query)
{
    const auto text = query.toStdString();
    const auto sections = ShortcutCatalog::filtered(text);
    list_->clear();
    for (const auto& section : sections) {
        auto* title = new QTreeWidgetItem(list_, {QString::fromStdString(section.title)});
        auto font = title->font(0);
        font.setBold(true);
        title->setFont(0, font);
        title->setFirstColumnSpanned(true);
        for (const auto& shortcut : section.shortcuts) {
            QStringList keys;
            for (const auto& key : shortcut.keys)
                keys << QString::fromStdString(key);
            new QTreeWidgetItem(list_, {keys.join(QStringLiteral(" / ")), QString::fromStdString(shortcut.action)});
        }
    }
    const bool none = sections.empty();
    list_->setVisible(!none);
    empty_->setVisible(none);
    if (none)
        empty_->setText(QString::fromStdString(L(translate("Orbisk", "No shortcuts match “%@”."), text)));
}

} // namespace orbisk
