// Tells the window when a volume is mounted or unmounted (poll on /proc/self/mountinfo).
#pragma once

#include "platform/MountTable.h"

#include <QObject>

#include <vector>

class QSocketNotifier;

namespace orbisk {

class VolumeMonitor : public QObject {
    Q_OBJECT
public:
    explicit VolumeMonitor(QObject* parent = nullptr);
    ~VolumeMonitor() override;

    /// The mounts as last read.
    [[nodiscard]] const MountTable& mounts() const { return mounts_; }

signals:
    /// The mount table changed; mounts() holds the new one.
    void mountsChanged();

private:
    void reread();
    int descriptor_ = -1;
    QSocketNotifier* notifier_ = nullptr;
    MountTable mounts_;
};

} // namespace orbisk
