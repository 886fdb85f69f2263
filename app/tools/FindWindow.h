// The Find window: items under a folder by name and content, listed while the search runs.
#pragma once

#include "operations/CancellationToken.h"
#include "tools/FileSearch.h"

#include <QDialog>

#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace orbisk {

/// Searches on a worker thread; batches arrive on the main thread tagged with the search they
/// belong to, and those of a stopped or replaced search are dropped. Return or a double-click on
/// a result asks the main window to show it.
class FindWindow : public QDialog {
    Q_OBJECT
public:
    /// The most results one search shows.
    static constexpr std::int64_t resultLimit = 10'000;

    FindWindow(const std::filesystem::path& folder, QWidget* parent = nullptr);
    ~FindWindow() override;

    /// Starts a search with what the fields hold (stopping the one running).
    void start();
    void stop();
    [[nodiscard]] bool isSearching() const { return searching_; }
    [[nodiscard]] const std::vector<FoundItem>& results() const { return results_; }
    [[nodiscard]] QLineEdit* patternField() const { return pattern_; }
    [[nodiscard]] QLineEdit* containingField() const { return containing_; }
    [[nodiscard]] QCheckBox* hiddenBox() const { return hidden_; }
    [[nodiscard]] QTreeWidget* list() const { return list_; }
    [[nodiscard]] QString summaryText() const;

signals:
    /// The user chose a result: show it in the active pane, selected.
    void showRequested(const std::filesystem::path& item);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addBatch(int generation, std::vector<FoundItem> batch);
    void finished(int generation, FileSearchSummary summary);
    void failed(int generation, ExpressionError error);
    void chooseCurrent();

    std::filesystem::path folder_;
    int generation_ = 0;
    bool searching_ = false;
    std::vector<FoundItem> results_;
    std::shared_ptr<CancellationToken> token_;
    std::jthread worker_;
    QLineEdit* pattern_;
    QLineEdit* containing_;
    QCheckBox* hidden_;
    QCheckBox* regex_;
    QCheckBox* caseSensitive_;
    QPushButton* findButton_;
    QTreeWidget* list_;
    QLabel* summary_;
};

} // namespace orbisk
