// New Folder (F7), New Text File and New Folder with Selection.
#include "commands/FileCommands.h"

#include "dialogs/NamePrompt.h"
#include "operations/ItemActions.h"
#include "operations/ItemStamp.h"
#include "operations/NameGenerator.h"
#include "operations/OperationRunner.h"
#include "panes/PaneViewController.h"
#include "support/L10n.h"
#include "windows/MainWindow.h"

#include <memory>

namespace orbisk {
namespace {

/// The proposal, or its Keep Both name when something of that name is already there.
std::string freeName(const std::string& proposal, bool folder, const std::filesystem::path& directory)
{
    const auto taken = NameGenerator::existsChecker(directory);
    return taken(proposal) ? NameGenerator::keepBothName(proposal, folder, taken) : proposal;
}

/// What the worker made for New Folder with Selection, handed to the main thread.
struct Made {
    std::filesystem::path folder;
    std::optional<ItemStamp> stamp;
    std::optional<FileOperationError> error;
};

} // namespace

NamePrompt* FileCommands::newFolder()
{
    return promptNewItem(true);
}

NamePrompt* FileCommands::newTextFile()
{
    return promptNewItem(false);
}

NamePrompt* FileCommands::promptNewItem(bool folder)
{
    const auto directory = window_.activePane().directory();
    const auto proposal = freeName(
        folder ? translate("Orbisk", "New Folder") : translate("Orbisk", "New Text File.txt"), folder, directory);
    const auto message = folder ? L(translate("Orbisk", "Create a folder in:\n%@"), directory.native())
                                : L(translate("Orbisk", "Create an empty file in:\n%@"), directory.native());
    auto* prompt = new NamePrompt(folder ? translate("Orbisk", "New Folder") : translate("Orbisk", "New Text File"),
                                  message, proposal, translate("Orbisk", "Create"), !folder, &window_);
    prompt->setAttribute(Qt::WA_DeleteOnClose);
    connect(prompt, &QDialog::accepted, this,
            [this, prompt, folder, directory] { createItem(folder, directory, prompt->name()); });
    prompt->open();
    return prompt;
}

void FileCommands::createItem(bool folder, const std::filesystem::path& directory, const std::string& name)
{
    // The failure gets the command's own alert rather than a report, so the work hands it over
    // beside the report.
    auto failure = std::make_shared<std::optional<FileOperationError>>();
    auto work = [folder, directory, name, failure](OperationContext&) {
        OperationReport report;
        auto made =
            folder ? ItemActions::createDirectory(name, directory) : ItemActions::createEmptyFile(name, directory);
        if (!made) {
            *failure = made.error();
            return report;
        }
        report.completed.push_back({*made, *made});
        report.undoChanges.push_back(UndoChange::created(*made, ItemStamp::of(*made)));
        return report;
    };
    RunOptions options;
    options.cancellable = false;
    options.undoName =
        folder ? L(translate("Orbisk", "New Folder “%@”"), name) : L(translate("Orbisk", "New File “%@”"), name);
    window_.operations().run(
        folder ? translate("Orbisk", "Creating a folder") : translate("Orbisk", "Creating a file"),
        folder ? translate("Orbisk", "New Folder") : translate("Orbisk", "New Text File"), {}, &window_,
        std::move(work),
        [this, folder, failure](const OperationReport& report) {
            if (*failure)
                warn(folder ? translate("Orbisk", "The folder couldn’t be created.")
                            : translate("Orbisk", "The file couldn’t be created."),
                     (*failure)->errorDescription());
            finished(report);
        },
        std::move(options));
}

NamePrompt* FileCommands::newFolderWithSelection()
{
    auto& pane = window_.activePane();
    const auto items = pane.selectedItems();
    if (items.empty())
        return nullptr;
    std::vector<std::filesystem::path> sources;
    for (const auto& item : items)
        sources.push_back(item.url());
    const auto directory = pane.directory();
    const auto proposal = freeName(translate("Orbisk", "New Folder With Items"), true, directory);
    const auto message = items.size() == 1
                             ? L(translate("Orbisk", "Create a folder in:\n%@\nand move “%@” into it."),
                                 directory.native(), items.front().name())
                             : L(translate("Orbisk", "Create a folder in:\n%@\nand move %lld items into it."),
                                 directory.native(), static_cast<long long>(items.size()));
    auto* prompt = new NamePrompt(translate("Orbisk", "New Folder with Selection"), message, proposal,
                                  translate("Orbisk", "Create"), false, &window_);
    prompt->setAttribute(Qt::WA_DeleteOnClose);
    connect(prompt, &QDialog::accepted, this, [this, prompt, directory, sources] {
        const auto name = prompt->name();
        auto made = std::make_shared<Made>();
        auto work = [directory, name, made](OperationContext&) {
            auto folder = ItemActions::createDirectory(name, directory);
            if (folder) {
                made->folder = *folder;
                made->stamp = ItemStamp::of(*folder);
            } else {
                made->error = folder.error();
            }
            return OperationReport{};
        };
        RunOptions options;
        options.cancellable = false;
        window_.operations().run(
            translate("Orbisk", "Creating a folder"), translate("Orbisk", "New Folder with Selection"), {}, &window_,
            std::move(work),
            [this, made, sources, name](const OperationReport&) {
                if (made->error) {
                    warn(translate("Orbisk", "The folder couldn’t be created."), made->error->errorDescription());
                    return;
                }
                // The folder and the move are one undo step: undo moves the items back, then
                // puts the emptied folder in the Trash.
                TransferRequest request;
                request.kind = TransferEngine::Kind::move;
                request.sources = sources;
                request.into = made->folder;
                request.changesBefore.push_back(UndoChange::created(made->folder, made->stamp));
                request.undoName = L(translate("Orbisk", "New Folder with Selection “%@”"), name);
                window_.operations().transfer(std::move(request), &window_,
                                              [this](const OperationReport& report) { finished(report); });
            },
            std::move(options));
    });
    prompt->open();
    return prompt;
}

} // namespace orbisk
