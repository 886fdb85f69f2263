// Rename in place (Shift+F6): one exclusive rename, or a move through the engine when the name is taken.
#include "commands/FileCommands.h"

#include "dialogs/NamePrompt.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/MainWindow.h"

#include <QMessageBox>
#include <QPushButton>

#include <memory>

namespace orbisk {

NamePrompt* FileCommands::renameInPlace()
{
    const auto focused = window_.activePane().focusedItem();
    if (!focused || focused->isParentLink)
        return nullptr;
    const auto item = focused->url();
    const auto& oldName = focused->name();
    auto* prompt = new NamePrompt(translate("Orbisk", "Rename"), L(translate("Orbisk", "New name for “%@”:"), oldName),
                                  oldName, translate("Orbisk", "Rename"), !focused->isDirectory, &window_);
    prompt->setAttribute(Qt::WA_DeleteOnClose);
    connect(prompt, &QDialog::accepted, this, [this, prompt, item, oldName] {
        const auto newName = prompt->name();
        if (newName == oldName)
            return;
        // The rename itself runs on a worker; a taken name comes back here to be asked about.
        struct Outcome {
            std::optional<FileOperationError> error;
        };
        auto outcome = std::make_shared<Outcome>();
        auto work = [item, newName, outcome](OperationContext&) {
            OperationReport report;
            auto renamed = ItemActions::rename(item, newName);
            if (!renamed) {
                if (renamed.error().kind() == FileOperationError::Kind::itemExists)
                    outcome->error = renamed.error();
                else
                    report.failures.push_back({item, AnyError(renamed.error())});
                return report;
            }
            report.completed.push_back({item, *renamed});
            report.undoChanges.push_back(UndoChange::moved(item, *renamed, ItemStamp::of(*renamed)));
            return report;
        };
        RunOptions options;
        options.cancellable = false;
        options.undoName = L(translate("Orbisk", "Rename “%@”"), oldName);
        window_.operations().run(
            L(translate("Orbisk", "Renaming “%@”"), oldName), translate("Orbisk", "Rename"), {}, &window_,
            std::move(work),
            [this, outcome, item, newName](const OperationReport& report) {
                finished(report);
                if (outcome->error)
                    renameTaken(item, newName);
            },
            std::move(options));
    });
    prompt->open();
    return prompt;
}

void FileCommands::renameTaken(const std::filesystem::path& item, const std::string& newName)
{
    auto* box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Orbisk"),
                        QString::fromStdString(L(translate("Orbisk", "An item named “%@” already exists."), newName)),
                        QMessageBox::NoButton, &window_);
    box->setInformativeText(QString::fromStdString(
        translate("Orbisk", "Replace it (it goes to the Trash), or keep both and give the renamed item a free name?")));
    auto* replace =
        box->addButton(QString::fromStdString(translate("Orbisk", "Replace")), QMessageBox::DestructiveRole);
    auto* keepBoth = box->addButton(QString::fromStdString(translate("Orbisk", "Keep Both")), QMessageBox::AcceptRole);
    box->addButton(QString::fromStdString(translate("Orbisk", "Cancel")), QMessageBox::RejectRole);
    box->setDefaultButton(keepBoth);
    box->setAttribute(Qt::WA_DeleteOnClose);
    replace->setObjectName(QStringLiteral("replace"));
    keepBoth->setObjectName(QStringLiteral("keepBoth"));
    connect(box, &QMessageBox::buttonClicked, this, [this, replace, keepBoth, item, newName](QAbstractButton* b) {
        if (b != replace && b != keepBoth)
            return;
        // The engine replaces through a hidden temporary name and sends the old item to the Trash,
        // or finds the Keep Both name; either way nothing is overwritten in place.
        TransferRequest request;
        request.kind = TransferEngine::Kind::move;
        request.sources = {item};
        request.into = item.parent_path();
        request.names[item] = newName;
        request.conflictPolicy = b == replace ? ConflictChoice::replace : ConflictChoice::keepBoth;
        request.title = L(translate("Orbisk", "Renaming “%@”"), item.filename().native());
        request.verb = translate("Orbisk", "Rename");
        request.undoName = L(translate("Orbisk", "Rename “%@”"), item.filename().native());
        window_.operations().transfer(std::move(request), &window_,
                                      [this](const OperationReport& report) { finished(report); });
    });
    box->open();
}

} // namespace orbisk
