// One pane without its widgets: tabs, history, loading, listing, selection, filter, watching.
#pragma once

#include "files/FileItem.h"
#include "panes/PaneListing.h"
#include "panes/PaneRows.h"
#include "panes/PaneTab.h"
#include "panes/SessionState.h"
#include "platform/MountTable.h"
#include "support/Paths.h"

#include <QObject>
#include <QTimer>

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace orbisk {

class AppSettings;
class FolderWatch;

/// What a pane needs from around it. Intervals are in milliseconds so that tests can shorten them.
struct PaneServices {
    AppSettings* settings = nullptr;
    /// Kind texts for sorting by kind; called on worker threads.
    PaneListing::Describe describe;
    /// Reads a folder; runs on a worker thread. Empty means DirectoryReader::read.
    std::function<std::expected<std::vector<FileItem>, std::error_code>(const std::filesystem::path&, bool)> read;
    std::function<std::filesystem::path()> home = [] { return Paths::home(); };
    std::function<MountTable()> mounts = [] { return MountTable::read().value_or(MountTable{}); };
    /// Opens a file with its default application; false when that failed.
    std::function<bool(const std::filesystem::path&)> openFile;
    int busyIndicatorDelay = 150;
    int watchQuietInterval = 250;
};

/// A message in the status line for as long as the pane stays in its folder.
struct PaneNotice {
    std::string text;
    std::filesystem::path directory;
};

class PaneViewController : public QObject {
    Q_OBJECT
public:
    PaneViewController(Side side, PaneServices services, QObject* parent = nullptr);
    ~PaneViewController() override;

    [[nodiscard]] Side side() const { return side_; }
    [[nodiscard]] const std::vector<std::unique_ptr<PaneTab>>& tabs() const { return tabs_; }
    [[nodiscard]] int activeTabIndex() const { return activeTabIndex_; }
    [[nodiscard]] PaneTab& activeTab() const { return *tabs_[static_cast<std::size_t>(activeTabIndex_)]; }
    [[nodiscard]] const std::filesystem::path& directory() const { return activeTab().directory; }
    [[nodiscard]] const PaneRows& rows() const { return rows_; }
    [[nodiscard]] bool isLoading() const { return isLoading_; }
    [[nodiscard]] bool busyIndicatorShown() const { return busyShown_; }
    [[nodiscard]] int loadGeneration() const { return loadGeneration_; }
    [[nodiscard]] const std::optional<PaneNotice>& notice() const { return notice_; }
    [[nodiscard]] bool isActive() const { return isActive_; }
    void setActive(bool active);

    /// The one way to change or reload the folder. The folder is read on a worker thread; only the
    /// newest load of the tab that is still active is applied.
    void navigate(const std::filesystem::path& to, std::optional<std::string> select = {},
                  HistoryMode mode = HistoryMode::push, std::optional<double> scrollY = {}, bool quiet = false);
    void goUp();
    void goBack();
    void goForward();
    void reload(bool quiet = false);
    /// Lists the folder again and then selects exactly names (what a file command made there), the
    /// first of them focused. Names not in the new listing are left out.
    void reloadSelecting(std::vector<std::string> names);
    [[nodiscard]] bool canGoUp() const { return directory() != "/"; }
    [[nodiscard]] bool canGoBack() const { return !activeTab().back.empty(); }
    [[nodiscard]] bool canGoForward() const { return !activeTab().forward.empty(); }
    /// Return or double-click: ".." goes up, a folder is entered, anything else is opened.
    void openRow(int row);
    void openFocused() { openRow(focusRow_); }

    void newTab();
    void closeTab(int index);
    void selectTab(int index);
    void selectAdjacentTab(int delta);
    /// Swap panes: both panes' locations change places.
    void swapLocations(PaneViewController& other);

    // Selection. The ".." row is never taken by the bulk commands.
    [[nodiscard]] bool isSelected(int row) const;
    [[nodiscard]] int focusRow() const { return focusRow_; }
    [[nodiscard]] std::vector<FileItem> selectedItems() const;
    [[nodiscard]] std::set<std::string> selectedNames() const;
    [[nodiscard]] std::optional<FileItem> focusedItem() const;
    /// The selection as the list view has it (no change signal back to the view).
    void setSelectionFromView(const std::vector<int>& rows, int focus);
    void select(const std::set<std::string>& names);
    void selectMatching(const std::string& patternText, bool select);
    void selectAll();
    void deselectAll();
    void invertSelection();

    void setSort(const SortSpec& spec);
    /// A click on a column: the sorted column again flips the direction, another sorts ascending.
    void sortBy(SortColumn column);
    void filterChanged(const std::string& text);
    /// The view reports its scroll offset so that history and tabs can restore it.
    void setScrollY(double y) { scrollY_ = y; }
    /// Lists again when showing hidden files or folders-first changed; follows watchDirectories.
    void preferencesChanged();

    /// Measured sizes of the shown folder's subfolders, by path; forgotten when the folder changes.
    [[nodiscard]] const FolderSizes& folderSizes() const { return activeTab().folderSizes; }
    /// The Size column's text for a folder row: its measured size, the count so far with "…"
    /// while it is being measured, or nothing.
    [[nodiscard]] std::optional<std::string> folderSizeText(const FileItem& item) const;
    /// A measurement of folder, a subfolder of the shown one, has reached bytes (done when
    /// final). Ignored when the pane shows another folder by now.
    void setFolderSize(const std::filesystem::path& folder, std::int64_t bytes, bool final);
    /// Measuring stopped: the running counts go, the finished sizes stay.
    void forgetRunningSizes();

    [[nodiscard]] std::string statusText() const;
    [[nodiscard]] std::string freeSpaceText() const { return freeSpace_; }

    [[nodiscard]] PaneSession session() const;
    /// Tabs come back with their folder and sort; each lists its folder when first shown.
    void restore(const PaneSession& session);

signals:
    void rowsChanged();
    void selectionChanged();
    void busyIndicatorChanged(bool shown);
    /// Folder, tabs or history changed: header, tab bar, title, back/forward.
    void locationChanged();
    void statusChanged();
    void scrollRequested(double y);
    /// A folder was shown by the user's own navigation (for the recent locations).
    void visited(const std::filesystem::path& folder);
    void openFailed(const QString& message);
    /// Some folder sizes in the Size column changed (rows and their order did not).
    void folderSizesChanged();

private:
    struct LoadResult;
    void deliver(int generation, const PaneTab* tab, HistoryMode mode, std::optional<std::string> select,
                 std::optional<double> scrollY, bool quiet, const std::filesystem::path& to, LoadResult result);
    void loadFailed(const std::filesystem::path& to, std::error_code error);
    /// Whether the volume mounted at mountPoint, which held folder, has been unmounted since.
    [[nodiscard]] bool volumeGone(const std::filesystem::path& mountPoint, const std::filesystem::path& folder) const;
    /// Goes home saying that the volume at mountPoint is no longer connected.
    void leaveGoneVolume(const std::filesystem::path& mountPoint, HistoryMode mode);
    [[nodiscard]] PaneListing::Arrangement arrangementFor(const PaneTab& tab) const;
    /// Shows the tab's listing (or rows made for it). When reread is set the rows replace those of
    /// the same folder, and a focused item that is gone passes the cursor to its nearest survivor.
    void applyListing(std::optional<std::string> select, std::optional<double> scrollY,
                      std::optional<PaneRows> rows = {}, bool reread = false);
    /// The row of rows_ nearest to where previous had its row focus among those still listed: the
    /// first survivor after it, else the last one before it; -1 when none survived.
    [[nodiscard]] int survivorRow(const PaneRows& previous, int focus) const;
    void rememberTabState();
    void showActiveTab();
    void startWatching();
    void directoryChangedOnDisk(bool gone);
    void setNotice(std::optional<PaneNotice> notice);
    void setBusyShown(bool shown);

    Side side_;
    PaneServices services_;
    std::vector<std::unique_ptr<PaneTab>> tabs_;
    int activeTabIndex_ = 0;
    PaneRows rows_;
    std::vector<bool> selected_;
    int focusRow_ = -1;
    double scrollY_ = 0;
    std::optional<PaneNotice> notice_;
    std::optional<std::vector<std::string>> pendingSelection_;
    std::string freeSpace_;
    bool isLoading_ = false;
    bool busyShown_ = false;
    bool isActive_ = false;
    int loadGeneration_ = 0;
    bool observedShowHidden_ = false;
    bool observedDirectoriesFirst_ = true;
    QTimer spinnerWork_;
    QTimer watchDebounce_;
    bool pendingGone_ = false;
    std::unique_ptr<FolderWatch> watcher_;
    /// Sizes so far of the subfolders being measured, by path.
    std::unordered_map<std::string, std::int64_t> measuring_;
};

} // namespace orbisk
