// The folder breakdown: what a folder is made of, its children largest first with their shares.
#pragma once

#include "operations/CancellationToken.h"
#include "tools/FolderBreakdown.h"

#include <QWidget>

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

class QLabel;
class QTreeWidget;

namespace orbisk {

/// Shown in place of a pane's list. Measures on a worker thread; each new folder stops the last
/// measurement, and only the newest one's reports are shown. Return or a double-click breaks down
/// the chosen subfolder, Alt+Up the enclosing folder, Esc asks to close.
class BreakdownView : public QWidget {
    Q_OBJECT
public:
    explicit BreakdownView(QWidget* parent = nullptr);
    ~BreakdownView() override;

    /// Measures folder and shows it (nothing happens when it is already the one shown).
    void showFolder(const std::filesystem::path& folder);
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    /// Asks the running measurement to stop, without waiting for it.
    void stopMeasuring();
    /// The report shown now.
    [[nodiscard]] const FolderBreakdown::Report& report() const { return report_; }
    [[nodiscard]] QTreeWidget* list() const { return list_; }
    /// The text under the list: progress while measuring, totals and notes afterwards.
    [[nodiscard]] QString statusText() const;

signals:
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void stopWorker();
    void takeReport(int generation);
    void present();
    void openCurrent();

    /// The newest report from the worker, waiting for the main thread.
    struct Mailbox {
        std::mutex lock;
        std::optional<FolderBreakdown::Report> report;
        int generation = 0;
        bool posted = false; ///< a call to take it is on its way to the main thread
    };

    std::filesystem::path folder_;
    std::filesystem::path focusAfterLoad_; ///< the subfolder that Alt+Up came from
    FolderBreakdown::Report report_;
    int generation_ = 0;
    std::shared_ptr<Mailbox> mailbox_ = std::make_shared<Mailbox>();
    std::shared_ptr<CancellationToken> token_;
    std::jthread worker_;
    QLabel* title_;
    QTreeWidget* list_;
    QLabel* status_;
};

} // namespace orbisk
