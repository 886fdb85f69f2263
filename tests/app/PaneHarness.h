// Builds a pane model over a temporary tree, with short intervals and settings of its own.
#pragma once

#include "AppSettings.h"
#include "panes/PaneViewController.h"
#include "support/TempTree.h"

#include <QTest>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace orbisk::test {

class PaneHarness {
public:
    explicit PaneHarness(PaneServices services = {}) : settingsFile_(settingsTree_.root() / "settings.ini")
    {
        settings_ = std::make_unique<AppSettings>(QString::fromStdString(settingsFile_.native()));
        services.settings = settings_.get();
        if (!services.describe)
            services.describe = [](const FileItem& item) { return item.isDirectory ? "Folder" : "Document"; };
        services.home = [this] { return tree_.root(); };
        services.busyIndicatorDelay = 150;
        services.watchQuietInterval = 250;
        pane_ = std::make_unique<PaneViewController>(Side::left, std::move(services));
    }

    TempTree& tree() { return tree_; }
    AppSettings& settings() { return *settings_; }
    PaneViewController& pane() { return *pane_; }

    /// Navigates and waits until the pane shows the result.
    [[nodiscard]] bool go(const std::filesystem::path& folder, HistoryMode mode = HistoryMode::push)
    {
        pane_->navigate(folder, {}, mode);
        return settle();
    }
    [[nodiscard]] bool settle()
    {
        return QTest::qWaitFor([this] { return !pane_->isLoading(); }, 5000);
    }

    [[nodiscard]] std::vector<std::string> names() const
    {
        std::vector<std::string> out;
        for (const auto& row : pane_->rows())
            out.push_back(row.name());
        return out;
    }
    [[nodiscard]] int rowOf(const std::string& name) const
    {
        const auto all = names();
        const auto found = std::ranges::find(all, name);
        return found == all.end() ? -1 : static_cast<int>(found - all.begin());
    }

private:
    TempTree tree_;
    TempTree settingsTree_;
    std::filesystem::path settingsFile_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<PaneViewController> pane_;
};

} // namespace orbisk::test
