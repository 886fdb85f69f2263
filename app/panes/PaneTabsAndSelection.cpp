// The pane's tabs, selection, sort, filter and session (the loading half is PaneViewController.cpp).
#include "AppSettings.h"
#include "files/WildcardPattern.h"
#include "panes/PaneViewController.h"

#include <algorithm>

namespace orbisk {

void PaneViewController::rememberTabState()
{
    auto& tab = activeTab();
    tab.selectedNames = selectedNames();
    const auto focused = focusedItem();
    tab.focusedName = focused ? std::optional(focused->name()) : std::nullopt;
    tab.scrollY = scrollY_;
}

void PaneViewController::showActiveTab()
{
    ++loadGeneration_; // whatever the previous tab was loading no longer applies
    auto& tab = activeTab();
    if (!tab.hasLoaded) {
        rows_ = {};
        selected_.clear();
        focusRow_ = -1;
        emit rowsChanged();
        navigate(tab.directory, {}, HistoryMode::reload, tab.scrollY);
    } else {
        applyListing({}, tab.scrollY);
        startWatching();
        reload(true); // the tab was not watched while hidden
    }
    emit locationChanged();
}

void PaneViewController::newTab()
{
    rememberTabState();
    auto tab = std::make_unique<PaneTab>(activeTab());
    tab->back.clear();
    tab->forward.clear();
    tab->filter.clear();
    tabs_.insert(tabs_.begin() + activeTabIndex_ + 1, std::move(tab));
    ++activeTabIndex_;
    showActiveTab();
}

void PaneViewController::closeTab(int index)
{
    if (tabs_.size() < 2 || index < 0 || static_cast<std::size_t>(index) >= tabs_.size())
        return;
    const bool wasActive = index == activeTabIndex_;
    tabs_.erase(tabs_.begin() + index);
    if (index < activeTabIndex_ || activeTabIndex_ >= static_cast<int>(tabs_.size()))
        --activeTabIndex_;
    if (wasActive)
        showActiveTab();
    else
        emit locationChanged();
}

void PaneViewController::selectTab(int index)
{
    if (index == activeTabIndex_ || index < 0 || static_cast<std::size_t>(index) >= tabs_.size())
        return;
    rememberTabState();
    activeTabIndex_ = index;
    showActiveTab();
}

void PaneViewController::selectAdjacentTab(int delta)
{
    const int count = static_cast<int>(tabs_.size());
    selectTab(((activeTabIndex_ + delta) % count + count) % count);
}

void PaneViewController::swapLocations(PaneViewController& other)
{
    const auto mine = directory();
    navigate(other.directory());
    other.navigate(mine);
}

bool PaneViewController::isSelected(int row) const
{
    return row >= 0 && static_cast<std::size_t>(row) < selected_.size() && selected_[static_cast<std::size_t>(row)];
}

std::vector<FileItem> PaneViewController::selectedItems() const
{
    std::vector<FileItem> items;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (selected_[i] && !rows_[i].isParentLink)
            items.push_back(rows_[i]);
    }
    return items;
}

std::set<std::string> PaneViewController::selectedNames() const
{
    std::set<std::string> names;
    for (const auto& item : selectedItems())
        names.insert(item.name());
    return names;
}

std::optional<FileItem> PaneViewController::focusedItem() const
{
    if (focusRow_ < 0 || static_cast<std::size_t>(focusRow_) >= rows_.size())
        return std::nullopt;
    return rows_[static_cast<std::size_t>(focusRow_)];
}

void PaneViewController::setSelectionFromView(const std::vector<int>& rows, int focus)
{
    selected_.assign(rows_.size(), false);
    for (const int row : rows) {
        if (row >= 0 && static_cast<std::size_t>(row) < rows_.size())
            selected_[static_cast<std::size_t>(row)] = true;
    }
    focusRow_ = focus;
    emit statusChanged();
}

void PaneViewController::select(const std::set<std::string>& names)
{
    for (std::size_t i = 0; i < rows_.size(); ++i)
        selected_[i] = !rows_[i].isParentLink && names.contains(rows_[i].name());
    emit selectionChanged();
    emit statusChanged();
}

void PaneViewController::selectMatching(const std::string& patternText, bool select)
{
    const WildcardPattern pattern(patternText, false);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (!rows_[i].isParentLink && pattern.matches(rows_[i].name()))
            selected_[i] = select;
    }
    emit selectionChanged();
    emit statusChanged();
}

void PaneViewController::selectAll()
{
    for (std::size_t i = 0; i < rows_.size(); ++i)
        selected_[i] = !rows_[i].isParentLink;
    emit selectionChanged();
    emit statusChanged();
}

void PaneViewController::deselectAll()
{
    selected_.assign(rows_.size(), false);
    emit selectionChanged();
    emit statusChanged();
}

void PaneViewController::invertSelection()
{
    for (std::size_t i = 0; i < rows_.size(); ++i)
        selected_[i] = !rows_[i].isParentLink && !selected_[i];
    emit selectionChanged();
    emit statusChanged();
}

void PaneViewController::sortBy(SortColumn column)
{
    auto order = activeTab().sort;
    order.ascending = order.column == column ? !order.ascending : true;
    order.column = column;
    setSort(order);
}

void PaneViewController::setSort(const SortSpec& spec)
{
    rememberTabState();
    activeTab().sort = spec;
    applyListing({}, {});
}

void PaneViewController::filterChanged(const std::string& text)
{
    if (activeTab().filter == text)
        return;
    rememberTabState();
    activeTab().filter = text;
    applyListing({}, {});
}

PaneSession PaneViewController::session() const
{
    PaneSession session;
    for (const auto& tab : tabs_)
        session.tabs.push_back({tab->directory, tab->sort});
    session.activeTab = activeTabIndex_;
    return session;
}

void PaneViewController::restore(const PaneSession& session)
{
    if (session.tabs.empty())
        return;
    tabs_.clear();
    for (const auto& saved : session.tabs) {
        auto tab = std::make_unique<PaneTab>();
        tab->directory = saved.path;
        tab->sort = saved.sort;
        tabs_.push_back(std::move(tab));
    }
    activeTabIndex_ = std::clamp(session.activeTab, 0, static_cast<int>(tabs_.size()) - 1);
    showActiveTab();
}

} // namespace orbisk
