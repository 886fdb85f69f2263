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
    list_->header()->setStretchLastSection(true);
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
    const int keyColumnLimit = fontMetrics().averageCharWidth() * 28;
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
            // A long list of keys (one row has four) takes a line per key, so that the key column
            // stays narrow and the actions keep the width.
            auto keyText = keys.join(QStringLiteral(" / "));
            if (fontMetrics().horizontalAdvance(keyText) > keyColumnLimit)
                keyText = keys.join(QLatin1Char('\n'));
            const auto action = QString::fromStdString(shortcut.action);
            auto* row = new QTreeWidgetItem(list_, {keyText, action});
            row->setToolTip(1, action);
        }
    }
    const bool none = sections.empty();
    list_->setVisible(!none);
    empty_->setVisible(none);
    if (none)
        empty_->setText(QString::fromStdString(L(translate("Orbisk", "No shortcuts match “%@”."), text)));
}

} // namespace orbisk
