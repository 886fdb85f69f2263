// The window's file commands: copy, move, rename, new items, duplicate, trash, clipboard and drops.
#pragma once

#include "commands/FileMimeData.h"
#include "files/FileItem.h"

#include <QObject>

#include <filesystem>
#include <string>
#include <vector>

class QMessageBox;
class QWidget;

namespace orbisk {

class AppSettings;
class MainWindow;
class NamePrompt;
class PaneViewController;
class TransferDialog;
struct OperationReport;

/// Builds each command's input on the main thread (selection, names, destination) with no more
/// disk access than status queries, and hands the work to the window's operation runner, which
/// shows progress, asks about clashes, presents the report and records the undo step. Dialogs are
/// opened with open() and answered through signals; none runs an event loop of its own.
class FileCommands : public QObject {
    Q_OBJECT
public:
    FileCommands(MainWindow& window, AppSettings& settings);

    // Copy and move (TransferCommands.cpp)
    /// F5 and F6: asks where to with the other pane's folder prefilled, then copies or moves the
    /// active pane's selection there. Returns the dialog (already open), or null without a selection.
    TransferDialog* copyToOtherPane();
    TransferDialog* moveToOtherPane();
    /// Copies pane's selection beside itself under the free "… copy" names.
    void duplicate(PaneViewController& pane);

    // New items and renaming (CreateCommands.cpp, RenameCommand.cpp)
    NamePrompt* newFolder();
    NamePrompt* newTextFile();
    /// Asks for a folder name, makes the folder beside the selection and moves the selection into
    /// it, as one undo step. Null without a selection.
    NamePrompt* newFolderWithSelection();
    /// Shift+F6: renames the focused item in its folder. A taken name offers Replace or Keep Both.
    NamePrompt* renameInPlace();

    // Trash (TrashCommand.cpp)
    /// F8 and Delete: asks, then moves the active pane's selection to the Trash. Null without one.
    QMessageBox* moveToTrash();
    /// The question and explanation the Trash command asks with for items.
    [[nodiscard]] static std::pair<std::string, std::string> trashQuestion(const std::vector<FileItem>& items);

    // ZIP archives (ZipCommands.cpp)
    /// Shift+F9: asks for the archive's name (proposed free in the other pane's folder, editable),
    /// then compresses the selection, or the item under the cursor, into it. Null with nothing chosen.
    NamePrompt* compressToOtherPane();
    /// Ctrl+Shift+F9: extracts the archive under the cursor into the other pane's folder. False
    /// when the cursor is on no file.
    bool extractToOtherPane();
    /// The name Compress proposes: the one item's name, or the folder's, with ".zip", made free in into.
    [[nodiscard]] static std::string proposedArchiveName(const std::vector<FileItem>& items,
                                                         const std::filesystem::path& from,
                                                         const std::filesystem::path& into);

    // Clipboard and drops (ClipboardCommands.cpp)
    /// Puts the active pane's selection on the clipboard as files.
    void copyFiles();
    /// Copies (or moves, when the giver cut them or move is true) the clipboard's files into the
    /// active pane's folder.
    void pasteFiles(bool move);
    /// Files dropped on a pane: copied or moved into folder through the engine.
    void drop(const FileOffer& offer, const std::filesystem::path& folder, Qt::DropAction action);

    /// Whether the active pane has a selection, for enabling the commands that need one.
    [[nodiscard]] bool hasSelection() const;

private:
    void wirePane(PaneViewController& pane, class FileListView& list);
    TransferDialog* askTransfer(bool move);
    void transferTyped(bool move, const std::vector<std::filesystem::path>& sources, const std::string& typed,
                       const std::filesystem::path& base);
    NamePrompt* promptNewItem(bool folder);
    void createItem(bool folder, const std::filesystem::path& directory, const std::string& name);
    void renameTaken(const std::filesystem::path& item, const std::string& newName);
    void warn(const std::string& message, const std::string& detail);
    void finished(const OperationReport& report);

    MainWindow& window_;
    AppSettings& settings_;
};

} // namespace orbisk
