#include "tools/FolderSizeJobs.h"

#include "panes/PaneViewController.h"
#include "tools/FolderSize.h"

#include <QPointer>

#include <chrono>

namespace orbisk {

FolderSizeJobs::FolderSizeJobs(QObject* parent) : QObject(parent) {}

FolderSizeJobs::~FolderSizeJobs()
{
    for (auto& [pane, job] : jobs_)
        job.token->cancel();
    jobs_.clear(); // joins every worker
}

void FolderSizeJobs::stop(const PaneViewController* pane)
{
    const auto found = jobs_.find(pane);
    if (found == jobs_.end())
        return;
    found->second.token->cancel();
    const QPointer<PaneViewController> target = found->second.pane;
    jobs_.erase(found); // the worker notices within 512 items and is joined here
    if (target)
        target->forgetRunningSizes();
}

bool FolderSizeJobs::isMeasuring(const PaneViewController& pane) const
{
    const auto found = jobs_.find(&pane);
    return found != jobs_.end() && found->second.running;
}

void FolderSizeJobs::measure(PaneViewController& pane, const std::vector<FileItem>& items)
{
    stop(&pane);
    std::vector<std::filesystem::path> folders;
    for (const auto& item : items) {
        if (item.isDirectory && !item.isSymbolicLink && !item.isParentLink)
            folders.push_back(item.url());
    }
    if (folders.empty())
        return;
    for (const auto& folder : folders)
        pane.setFolderSize(folder, 0, false);

    auto token = std::make_shared<CancellationToken>();
    QPointer<PaneViewController> target(&pane);
    // Leaving the folder makes the rest of the measurement useless.
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(&pane, &PaneViewController::locationChanged, this,
                          [this, target, folder = pane.directory(), connection] {
                              if (!target || target->directory() != folder) {
                                  disconnect(*connection);
                                  stop(target.data());
                              }
                          });
    const auto post = [this, target](const std::filesystem::path& folder, std::int64_t bytes, bool final) {
        QMetaObject::invokeMethod(
            this,
            [target, folder, bytes, final] {
                if (target)
                    target->setFolderSize(folder, bytes, final);
            },
            Qt::QueuedConnection);
    };
    const auto finished = [this, key = &pane] {
        QMetaObject::invokeMethod(
            this,
            [this, key] {
                if (const auto found = jobs_.find(key); found != jobs_.end())
                    found->second.running = false;
            },
            Qt::QueuedConnection);
    };
    Job job;
    job.token = token;
    job.pane = target;
    job.worker = std::jthread([token, folders = std::move(folders), post, finished] {
        for (const auto& folder : folders) {
            auto last = std::chrono::steady_clock::now();
            const auto result = FolderSize::compute(folder, *token, [&](const FolderSize::Result& running) {
                const auto now = std::chrono::steady_clock::now();
                if (now - last >= std::chrono::milliseconds(100)) {
                    last = now;
                    post(folder, running.bytes, false);
                }
            });
            if (token->isCancelled())
                return;
            post(folder, result.bytes, true);
        }
        finished();
    });
    jobs_.emplace(&pane, std::move(job));
}

} // namespace orbisk
