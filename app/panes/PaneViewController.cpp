#include "panes/PaneViewController.h"

#include "AppSettings.h"
#include "files/DirectoryReader.h"
#include "files/WildcardPattern.h"
#include "panes/FolderWatch.h"
#include "support/ByteCount.h"
#include "support/L10n.h"

#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <string_view>

namespace orbisk {

struct PaneViewController::LoadResult {
    std::expected<std::shared_ptr<const FolderListing>, std::error_code> listing;
    std::filesystem::path mountPoint;
    std::optional<Paths::VolumeCapacity> capacity;
    // Filtering and sorting a large folder takes as long as reading it, so the worker does both;
    // the rows are used only if the tab still wants this arrangement when they arrive.
    PaneListing::Arrangement arrangement;
    PaneRows rows;
};

namespace {

/// Forgets the measured size of every folder whose modification time differs in fresh, or that
/// is gone: a folder that changed no longer has the size it was measured at.
void dropChangedFolderSizes(PaneTab& tab, const FolderListing& fresh)
{
    if (tab.folderSizes.empty() || !tab.listing)
        return;
    std::unordered_map<std::string, std::optional<FileItem::Date>> before;
    for (const auto& item : tab.listing->items) {
        if (item.isDirectory)
            before.emplace(item.urlBytes(), item.modificationDate);
    }
    FolderSizes kept;
    for (const auto& item : fresh.items) {
        const auto url = item.urlBytes();
        const auto size = tab.folderSizes.find(std::string_view(url));
        const auto old = before.find(url);
        if (size != tab.folderSizes.end() && old != before.end() && old->second == item.modificationDate)
            kept.emplace(size->first, size->second);
    }
    tab.folderSizes = std::move(kept);
}

bool sameArrangement(const PaneListing::Arrangement& a, const PaneListing::Arrangement& b)
{
    return a.filter == b.filter && a.sort == b.sort && a.directoriesFirst == b.directoriesFirst &&
           a.folderSizes == b.folderSizes;
}

} // namespace

PaneViewController::PaneViewController(Side side, PaneServices services, QObject* parent)
    : QObject(parent), side_(side), services_(std::move(services))
{
    if (!services_.read)
        services_.read = [](const std::filesystem::path& folder, bool includeHidden) {
            return DirectoryReader::read(folder, includeHidden);
        };
    auto tab = std::make_unique<PaneTab>();
    tab->directory = services_.home();
    tabs_.push_back(std::move(tab));
    observedShowHidden_ = services_.settings->showHiddenFiles();
    observedDirectoriesFirst_ = services_.settings->directoriesFirst();

    spinnerWork_.setSingleShot(true);
    spinnerWork_.setInterval(services_.busyIndicatorDelay);
    connect(&spinnerWork_, &QTimer::timeout, this, [this] { setBusyShown(true); });
    watchDebounce_.setSingleShot(true);
    watchDebounce_.setInterval(services_.watchQuietInterval);
    connect(&watchDebounce_, &QTimer::timeout, this, [this] {
        if (std::exchange(pendingGone_, false))
            startWatching();
        reload(true);
    });
}

PaneViewController::~PaneViewController() = default;

void PaneViewController::setActive(bool active)
{
    if (isActive_ == active)
        return;
    isActive_ = active;
    emit locationChanged();
}

void PaneViewController::navigate(const std::filesystem::path& to, std::optional<std::string> select, HistoryMode mode,
                                  std::optional<double> scrollY, bool quiet)
{
    const int generation = ++loadGeneration_;
    const PaneTab* asker = &activeTab();
    isLoading_ = true;
    spinnerWork_.start();

    auto read = services_.read;
    auto mounts = services_.mounts;
    auto describe = services_.describe;
    const bool includeHidden = services_.settings->showHiddenFiles();
    auto arrangement = arrangementFor(activeTab());
    if (to != activeTab().directory)
        arrangement.folderSizes.clear();
    auto* watcher = new QFutureWatcher<LoadResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this,
            [this, watcher, generation, asker, to, mode, select = std::move(select), scrollY, quiet] {
                watcher->deleteLater();
                deliver(generation, asker, mode, select, scrollY, quiet, to, watcher->result());
            });
    watcher->setFuture(QtConcurrent::run([read, mounts, describe, to, includeHidden, arrangement] {
        LoadResult result{std::unexpected(std::error_code()), {}, {}, arrangement, {}};
        auto items = read(to, includeHidden);
        if (!items) {
            result.listing = std::unexpected(items.error());
            return result;
        }
        const auto listing = std::make_shared<const FolderListing>(std::move(*items));
        result.listing = listing;
        result.mountPoint = mounts().mountPointOf(to);
        result.capacity = Paths::volumeCapacity(to);
        result.rows = PaneListing::rows(to, listing, arrangement, describe);
        return result;
    }));
}

void PaneViewController::deliver(int generation, const PaneTab* tab, HistoryMode mode,
                                 std::optional<std::string> select, std::optional<double> scrollY, bool quiet,
                                 const std::filesystem::path& to, LoadResult result)
{
    // A superseded load, or one whose tab is no longer shown, must never replace what is there.
    if (generation != loadGeneration_ || tab != &activeTab())
        return;
    isLoading_ = false;
    spinnerWork_.stop();
    setBusyShown(false);
    if (!result.listing) {
        loadFailed(to, result.listing.error());
        return;
    }

    auto& current = activeTab();
    const bool sameFolder = current.hasLoaded && current.directory == to;
    // A volume unmounted while its root was shown leaves the empty folder it was mounted on, which
    // reads fine: what tells is that the folder is no longer on the volume it was listed from.
    if (sameFolder && result.mountPoint != current.mountPoint && volumeGone(current.mountPoint, to)) {
        leaveGoneVolume(current.mountPoint, HistoryMode::reload);
        return;
    }
    if (sameFolder && mode == HistoryMode::push)
        mode = HistoryMode::reload; // choosing the folder already shown adds no history
    if (current.hasLoaded) {
        const auto focused = focusedItem();
        HistoryEntry left{current.directory, {}, scrollY_};
        if (focused && !focused->isParentLink)
            left.selectedName = focused->name();
        switch (mode) {
        case HistoryMode::push:
            current.back.push_back(std::move(left));
            current.forward.clear();
            break;
        case HistoryMode::back:
            if (!current.back.empty())
                current.back.pop_back();
            current.forward.push_back(std::move(left));
            break;
        case HistoryMode::forward:
            if (!current.forward.empty())
                current.forward.pop_back();
            current.back.push_back(std::move(left));
            break;
        case HistoryMode::reload: break;
        }
    }
    if (sameFolder) {
        dropChangedFolderSizes(current, **result.listing);
        current.selectedNames = selectedNames();
        if (const auto focused = focusedItem())
            current.focusedName = focused->name();
    } else {
        current.selectedNames.clear();
        current.focusedName.reset();
        current.folderSizes.clear();
        measuring_.clear();
    }
    if (pendingSelection_ && sameFolder && !pendingSelection_->empty()) {
        current.selectedNames = {pendingSelection_->begin(), pendingSelection_->end()};
        current.focusedName = pendingSelection_->front();
    }
    pendingSelection_.reset();
    current.directory = to;
    current.listing = std::move(*result.listing);
    current.mountPoint = result.mountPoint;
    current.hasLoaded = true;
    if (notice_ && notice_->directory != to)
        notice_.reset();
    freeSpace_ = PaneListing::freeSpaceText(result.capacity);

    std::optional<PaneRows> rows;
    if (sameArrangement(result.arrangement, arrangementFor(current)))
        rows = std::move(result.rows);
    applyListing(select, sameFolder && !scrollY ? std::optional<double>() : std::optional<double>(scrollY.value_or(0)),
                 std::move(rows), sameFolder);
    if (!quiet) {
        startWatching();
        emit visited(to);
    }
    emit locationChanged();
}

void PaneViewController::loadFailed(const std::filesystem::path& to, std::error_code error)
{
    const auto& current = activeTab();
    const auto name = to.filename().empty() ? to.native() : to.filename().native();
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted) {
        // Linux has no grant to ask for: the pane stays where it is and says why.
        setNotice(
            PaneNotice{L(translate("Orbisk", "You don’t have permission to open “%@”."), name), current.directory});
        return;
    }
    if (Paths::isExistingFolder(to)) {
        setNotice(PaneNotice{L(translate("Orbisk", "“%@” couldn’t be opened."), name), current.directory});
        return;
    }
    if (volumeGone(current.mountPoint, to)) {
        leaveGoneVolume(current.mountPoint, current.directory == to ? HistoryMode::reload : HistoryMode::push);
        return;
    }
    const auto destination = Paths::nearestExistingFolder(Paths::parentFolder(to));
    PaneNotice notice{L(translate("Orbisk", "“%@” is no longer available."), name), destination};
    setNotice(notice);
    if (destination != to)
        navigate(destination, {}, current.directory == to ? HistoryMode::reload : HistoryMode::push);
}

bool PaneViewController::volumeGone(const std::filesystem::path& mountPoint, const std::filesystem::path& folder) const
{
    return !mountPoint.empty() && mountPoint != "/" && Paths::isSameOrInside(folder, mountPoint) &&
           !services_.mounts().isMounted(mountPoint);
}

void PaneViewController::leaveGoneVolume(const std::filesystem::path& mountPoint, HistoryMode mode)
{
    const auto home = services_.home();
    setNotice(PaneNotice{L(translate("Orbisk", "“%@” is no longer connected."), mountPoint.filename().native()), home});
    navigate(home, {}, mode);
}

PaneListing::Arrangement PaneViewController::arrangementFor(const PaneTab& tab) const
{
    return {tab.filter, tab.sort, services_.settings->directoriesFirst(), tab.folderSizes};
}

void PaneViewController::applyListing(std::optional<std::string> select, std::optional<double> scrollY,
                                      std::optional<PaneRows> rows, bool reread)
{
    auto& tab = activeTab();
    const PaneRows previous = reread ? rows_ : PaneRows();
    const int previousFocus = focusRow_;
    if (rows)
        rows_ = std::move(*rows);
    else if (tab.listing)
        rows_ = PaneListing::rows(tab.directory, tab.listing, arrangementFor(tab), services_.describe);
    else
        rows_ = {};
    selected_.assign(rows_.size(), false);
    focusRow_ = rows_.empty() ? -1 : 0;
    const std::optional<std::string> focusName = select ? select : tab.focusedName;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const auto& name = rows_[i].name();
        if (rows_[i].isParentLink)
            continue;
        if (select ? name == *select : tab.selectedNames.contains(name))
            selected_[i] = true;
        if (focusName && name == *focusName)
            focusRow_ = static_cast<int>(i);
    }
    const bool focusGone = focusName && (focusRow_ < 0 || rows_[static_cast<std::size_t>(focusRow_)].isParentLink ||
                                         rows_[static_cast<std::size_t>(focusRow_)].name() != *focusName);
    if (reread && !select && focusGone && previousFocus >= 0 &&
        static_cast<std::size_t>(previousFocus) < previous.size() &&
        !previous[static_cast<std::size_t>(previousFocus)].isParentLink &&
        previous[static_cast<std::size_t>(previousFocus)].name() == *focusName) {
        // The focused item went (trashed, moved away): the cursor stays in its place, on the item
        // that follows, so that the next command can be given at once; it selects that item when
        // nothing else is selected any more, as a cursor move would.
        if (const int survivor = survivorRow(previous, previousFocus); survivor >= 0) {
            focusRow_ = survivor;
            if (std::ranges::find(selected_, true) == selected_.end())
                selected_[static_cast<std::size_t>(survivor)] = true;
        }
    }
    emit rowsChanged();
    emit selectionChanged();
    emit statusChanged();
    if (scrollY) {
        scrollY_ = *scrollY;
        emit scrollRequested(*scrollY);
    }
}

int PaneViewController::survivorRow(const PaneRows& previous, int focus) const
{
    std::unordered_map<std::string_view, int> rowByName;
    rowByName.reserve(rows_.size());
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (!rows_[i].isParentLink)
            rowByName.emplace(rows_[i].name(), static_cast<int>(i));
    }
    const auto survivor = [&](std::size_t row) {
        const auto found =
            previous[row].isParentLink ? rowByName.end() : rowByName.find(std::string_view(previous[row].name()));
        return found == rowByName.end() ? -1 : found->second;
    };
    for (auto row = static_cast<std::size_t>(focus) + 1; row < previous.size(); ++row) {
        if (const int now = survivor(row); now >= 0)
            return now;
    }
    for (auto row = static_cast<std::size_t>(focus); row-- > 0;) {
        if (const int now = survivor(row); now >= 0)
            return now;
    }
    return -1;
}

void PaneViewController::goUp()
{
    if (!canGoUp())
        return;
    navigate(Paths::parentFolder(directory()), directory().filename().native());
}

void PaneViewController::goBack()
{
    if (!canGoBack())
        return;
    const auto entry = activeTab().back.back();
    navigate(entry.url, entry.selectedName, HistoryMode::back, entry.scrollY);
}

void PaneViewController::goForward()
{
    if (!canGoForward())
        return;
    const auto entry = activeTab().forward.back();
    navigate(entry.url, entry.selectedName, HistoryMode::forward, entry.scrollY);
}

void PaneViewController::reload(bool quiet)
{
    navigate(directory(), {}, HistoryMode::reload, {}, quiet);
}

void PaneViewController::reloadSelecting(std::vector<std::string> names)
{
    pendingSelection_ = std::move(names);
    reload(true);
}

void PaneViewController::openRow(int row)
{
    if (row < 0 || static_cast<std::size_t>(row) >= rows_.size())
        return;
    const auto& item = rows_[static_cast<std::size_t>(row)];
    if (item.isParentLink)
        goUp();
    else if (item.isDirectory)
        navigate(item.url());
    else if (!services_.openFile || !services_.openFile(item.url()))
        emit openFailed(QString::fromStdString(L(translate("Orbisk", "“%@” couldn’t be opened."), item.name())));
}

void PaneViewController::setNotice(std::optional<PaneNotice> notice)
{
    notice_ = std::move(notice);
    emit statusChanged();
}

void PaneViewController::setBusyShown(bool shown)
{
    if (busyShown_ == shown)
        return;
    busyShown_ = shown;
    emit busyIndicatorChanged(shown);
}

void PaneViewController::startWatching()
{
    watchDebounce_.stop();
    watcher_.reset();
    if (!services_.settings->watchDirectories())
        return;
    watcher_ = FolderWatch::open(directory());
    if (watcher_)
        connect(watcher_.get(), &FolderWatch::changed, this, [this](bool gone) {
            // Each event restarts the quiet interval, so a burst gives one reload after its end.
            pendingGone_ = pendingGone_ || gone;
            watchDebounce_.start();
        });
}

void PaneViewController::preferencesChanged()
{
    const bool showHidden = services_.settings->showHiddenFiles();
    const bool directoriesFirst = services_.settings->directoriesFirst();
    if (showHidden != observedShowHidden_ || directoriesFirst != observedDirectoriesFirst_) {
        observedShowHidden_ = showHidden;
        observedDirectoriesFirst_ = directoriesFirst;
        for (auto& tab : tabs_) {
            if (tab.get() != &activeTab())
                tab->hasLoaded = false;
        }
        reload(true);
    }
    if (services_.settings->watchDirectories() != (watcher_ != nullptr))
        startWatching();
}

std::optional<std::string> PaneViewController::folderSizeText(const FileItem& item) const
{
    const auto url = item.urlBytes();
    if (const auto running = measuring_.find(url); running != measuring_.end())
        return formatByteCount(running->second) + "…";
    const auto& sizes = activeTab().folderSizes;
    if (const auto measured = sizes.find(std::string_view(url)); measured != sizes.end())
        return formatByteCount(measured->second);
    return std::nullopt;
}

void PaneViewController::setFolderSize(const std::filesystem::path& folder, std::int64_t bytes, bool final)
{
    if (Paths::parentFolder(folder) != directory())
        return;
    if (!final) {
        measuring_[folder.native()] = bytes;
        emit folderSizesChanged();
        return;
    }
    measuring_.erase(folder.native());
    auto& tab = activeTab();
    tab.folderSizes[folder] = bytes;
    if (tab.sort.column == SortColumn::size) {
        // The new size may move the folder: arrange again, keeping selection and focus.
        tab.selectedNames = selectedNames();
        if (const auto focused = focusedItem())
            tab.focusedName = focused->name();
        applyListing({}, {});
        return;
    }
    emit folderSizesChanged();
    emit statusChanged();
}

void PaneViewController::forgetRunningSizes()
{
    if (measuring_.empty())
        return;
    measuring_.clear();
    emit folderSizesChanged();
}

std::string PaneViewController::statusText() const
{
    if (notice_ && notice_->directory == directory())
        return notice_->text;
    const auto& tab = activeTab();
    return PaneListing::statusText(rows_, selected_, tab.listing ? tab.listing->items.size() : 0, !tab.filter.empty(),
                                   tab.folderSizes);
}

} // namespace orbisk
