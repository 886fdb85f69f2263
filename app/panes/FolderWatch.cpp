#include "panes/FolderWatch.h"

#include <QSocketNotifier>

namespace orbisk {

std::unique_ptr<FolderWatch> FolderWatch::open(const std::filesystem::path& folder)
{
    auto watcher = DirectoryWatcher::open(folder);
    if (!watcher)
        return nullptr;
    return std::unique_ptr<FolderWatch>(new FolderWatch(std::move(*watcher)));
}

FolderWatch::FolderWatch(DirectoryWatcher watcher)
    : watcher_(std::move(watcher)), notifier_(new QSocketNotifier(watcher_.descriptor(), QSocketNotifier::Read, this))
{
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        const auto event = watcher_.readPendingEvents();
        if (event)
            emit changed(*event == DirectoryWatcher::Event::directoryGone);
        if (event == DirectoryWatcher::Event::directoryGone) {
            // The kernel dropped the watch; nothing more will come from this descriptor.
            notifier_->setEnabled(false);
        }
    });
}

FolderWatch::~FolderWatch()
{
    notifier_->setEnabled(false);
    watcher_.cancel();
}

} // namespace orbisk
