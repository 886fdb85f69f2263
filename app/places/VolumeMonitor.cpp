#include "places/VolumeMonitor.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace orbisk {

VolumeMonitor::VolumeMonitor(QObject* parent) : QObject(parent)
{
    descriptor_ = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0)
        return;
    reread();
    // The kernel flags mountinfo with POLLPRI when the table changes, which Qt's exception
    // notifier waits for; reading the file again from the start re-arms it.
    notifier_ = new QSocketNotifier(descriptor_, QSocketNotifier::Exception, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        const auto old = mounts_.entries();
        reread();
        if (mounts_.entries() != old)
            emit mountsChanged();
    });
}

VolumeMonitor::~VolumeMonitor()
{
    delete notifier_;
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void VolumeMonitor::reread()
{
    std::string text;
    char buffer[8192];
    if (::lseek(descriptor_, 0, SEEK_SET) < 0)
        return;
    for (;;) {
        const auto count = ::read(descriptor_, buffer, sizeof buffer);
        if (count <= 0)
            break;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    mounts_ = MountTable::parse(text);
}

} // namespace orbisk
