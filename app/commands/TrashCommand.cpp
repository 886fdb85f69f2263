// Move to Trash (F8, Delete): ask first, then trash through the runner.
#include "commands/FileCommands.h"

#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/MainWindow.h"

#include <QMessageBox>
#include <QPushButton>

namespace orbisk {
namespace {

/// How many names the question for several items lists before "…and n more".
constexpr std::size_t listedNames = 5;

} // namespace

std::pair<std::string, std::string> FileCommands::trashQuestion(const std::vector<FileItem>& items)
{
    const auto explanation = translate("Orbisk", "You can restore items from the Trash in your file manager.");
    if (items.size() == 1)
        return {L(translate("Orbisk", "Move “%@” to the Trash?"), items.front().name()), explanation};
    auto question = L(translate("Orbisk", "Move %lld items to the Trash?"), static_cast<long long>(items.size()));
    for (std::size_t i = 0; i < items.size() && i < listedNames; ++i)
        question += "\n" + L(translate("Orbisk", "“%@”"), items[i].name());
    if (items.size() > listedNames)
        question += "\n" + L(translate("Orbisk", "…and %lld more"), static_cast<long long>(items.size() - listedNames));
    return {question, explanation};
}

QMessageBox* FileCommands::moveToTrash()
{
    const auto items = window_.activePane().selectedItems();
    if (items.empty())
        return nullptr;
    std::vector<std::filesystem::path> paths;
    for (const auto& item : items)
        paths.push_back(item.url());
    const auto [question, explanation] = trashQuestion(items);
    auto* box = new QMessageBox(QMessageBox::Question, QStringLiteral("Orbisk"), QString::fromStdString(question),
                                QMessageBox::NoButton, &window_);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(QString::fromStdString(explanation));
    auto* confirm =
        box->addButton(QString::fromStdString(translate("Orbisk", "Move to Trash")), QMessageBox::AcceptRole);
    box->addButton(QString::fromStdString(translate("Orbisk", "Cancel")), QMessageBox::RejectRole);
    box->setDefaultButton(confirm);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::buttonClicked, this, [this, confirm, paths](QAbstractButton* button) {
        if (button != confirm)
            return;
        window_.operations().trash(paths, &window_, [this](const OperationReport& report) { finished(report); });
    });
    box->open();
    return box;
}

} // namespace orbisk
