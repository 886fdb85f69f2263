// Measuring the sizes of a pane's folders on a worker thread, for the Size column.
#pragma once

#include "files/FileItem.h"
#include "operations/CancellationToken.h"

#include <QObject>
#include <QPointer>

#include <map>
#include <memory>
#include <thread>
#include <vector>

namespace orbisk {

class PaneViewController;

/// One measurement at a time per pane: a new one, or the pane leaving the folder, stops the last.
/// Results reach the pane on the main thread as running counts (about ten a second) and as final
/// sizes. Workers are stopped and joined when this object goes.
class FolderSizeJobs : public QObject {
    Q_OBJECT
public:
    explicit FolderSizeJobs(QObject* parent = nullptr);
    ~FolderSizeJobs() override;

    /// Measures the real folders among items (links are not followed), one after another.
    void measure(PaneViewController& pane, const std::vector<FileItem>& items);
    /// Whether a measurement for pane is still running.
    [[nodiscard]] bool isMeasuring(const PaneViewController& pane) const;

private:
    struct Job {
        std::shared_ptr<CancellationToken> token;
        QPointer<PaneViewController> pane;
        std::jthread worker;
        bool running = true;
    };
    void stop(const PaneViewController* pane);

    std::map<const PaneViewController*, Job> jobs_;
};

} // namespace orbisk
