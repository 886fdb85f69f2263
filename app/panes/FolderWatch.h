// A directory watcher woken by Qt's event loop: the pane's way of hearing about changes on disk.
#pragma once

#include "platform/DirectoryWatcher.h"

#include <QObject>

#include <filesystem>
#include <memory>

class QSocketNotifier;

namespace orbisk {

class FolderWatch : public QObject {
    Q_OBJECT
public:
    /// A watch on folder delivering on the calling (main) thread, or nothing when the folder
    /// cannot be watched.
    [[nodiscard]] static std::unique_ptr<FolderWatch> open(const std::filesystem::path& folder);
    ~FolderWatch() override;

signals:
    /// Something changed in the folder; gone when the folder itself went away.
    void changed(bool gone);

private:
    explicit FolderWatch(DirectoryWatcher watcher);
    DirectoryWatcher watcher_;
    QSocketNotifier* notifier_;
};

} // namespace orbisk
