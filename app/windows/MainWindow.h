// The main window: sidebar, two panes with a divider, menus, function-key bar and the session.
#pragma once

#include "panes/KindTexts.h"
#include "panes/PaneTab.h"
#include "places/RecentLocations.h"
#include "shortcuts/ShortcutCommand.h"

#include <QMainWindow>

#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

class QAction;
class QMenu;
class QSplitter;
class QTimer;

namespace orbisk {

class AppSettings;
class BreakdownView;
class FolderSizeJobs;
class FileCommands;
class FileUndoCenter;
class FunctionKeyBar;
class OperationRunner;
struct OperationReport;
class PaneViewController;
class PaneWidget;
class Sidebar;
class TextWindows;
class VolumeMonitor;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppSettings& settings, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Brings back the saved panes, tabs, sorts, active side and divider, or starts both panes at
    /// home when nothing usable was saved.
    void restoreSession();
    void saveSession();

    [[nodiscard]] PaneViewController& pane(Side side) const { return *panes_[index(side)]; }
    [[nodiscard]] PaneWidget& paneWidget(Side side) const { return *paneWidgets_[index(side)]; }
    [[nodiscard]] Side activeSide() const { return active_; }
    [[nodiscard]] PaneViewController& activePane() const { return pane(active_); }
    void setActiveSide(Side side);
    /// The left pane's share of the width of both panes.
    [[nodiscard]] double dividerRatio() const;
    void setDividerRatio(double ratio);
    /// The action of a catalog command; nothing for commands the main window does not have.
    [[nodiscard]] QAction* command(ShortcutCommand identifier) const;
    /// The file commands behind the File and Edit menus, the function keys and drops.
    [[nodiscard]] FileCommands& files() const { return *files_; }
    /// The viewer, editor and quick preview windows opened from the panes.
    [[nodiscard]] TextWindows& texts() const { return *texts_; }

    /// The window's file operations: every command that changes the disk runs through it.
    [[nodiscard]] OperationRunner& operations() const { return *runner_; }
    /// The window's file undo history, apart from the text fields' own.
    [[nodiscard]] FileUndoCenter& undoCenter() const { return *undo_; }
    /// After an operation: both panes list their folders again and select what the report says
    /// ended up in them.
    void showResults(const OperationReport& report);
    /// The folder breakdown while it stands in for a pane; null when it is closed.
    [[nodiscard]] BreakdownView* breakdown() const { return breakdown_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    static std::size_t index(Side side) { return side == Side::left ? 0 : 1; }
    [[nodiscard]] Side otherSide() const { return active_ == Side::left ? Side::right : Side::left; }
    void buildCommands();
    void buildFunctionKeys();
    QAction* addCommand(QMenu* menu, ShortcutCommand identifier, const std::string& title);
    QAction* addLaterCommand(QMenu* menu, ShortcutCommand identifier, const std::string& title);
    void updateCommands();
    void updateTitle();
    void goToFolder();
    void promptPattern(bool select);
    void showShortcuts();
    void showSettings();
    void toggleFavorite();
    void goToFavorite(std::size_t index);
    void refreshFavorites();
    void updateUndoCommands();
    // Folder sizes, the breakdown and the Find window.
    void buildToolCommands(QMenu* commands, QMenu* edit);
    void calculateFolderSizes();
    void toggleBreakdown();
    void closeBreakdown();
    void followCursorInBreakdown();
    void findFiles();
    /// The file under the active pane's cursor, for the viewer, the editor and the preview.
    [[nodiscard]] std::optional<std::filesystem::path> focusedFile(bool foldersToo) const;
    void followWithPreview();

    AppSettings& settings_;
    /// Shared with the panes' workers, which may still be sorting by kind while the window closes.
    std::shared_ptr<KindTexts> kinds_ = std::make_shared<KindTexts>();
    RecentLocations recent_;
    std::array<PaneViewController*, 2> panes_{};
    std::array<PaneWidget*, 2> paneWidgets_{};
    Side active_ = Side::left;
    QSplitter* outer_ = nullptr;
    QSplitter* divider_ = nullptr;
    Sidebar* sidebar_ = nullptr;
    FunctionKeyBar* keyBar_ = nullptr;
    VolumeMonitor* volumes_ = nullptr;
    std::map<ShortcutCommand, QAction*> commands_;
    QAction* functionKeyBarToggle_ = nullptr;
    FileCommands* files_ = nullptr;
    FolderSizeJobs* sizeJobs_ = nullptr;
    BreakdownView* breakdown_ = nullptr; ///< shown in place of the pane on breakdownSide_
    Side breakdownSide_ = Side::right;
    QTimer* breakdownFollow_ = nullptr;
    TextWindows* texts_ = nullptr;
    // Declared last so that the runner goes first: it waits for its workers before anything they
    // report to is destroyed.
    std::unique_ptr<FileUndoCenter> undo_;
    std::unique_ptr<OperationRunner> runner_;
};

} // namespace orbisk
