#include "QuitSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>

#include <cerrno>

namespace orbisk {

namespace {

constexpr int handled[] = {SIGTERM, SIGINT, SIGHUP};

// The write end for the handler; a plain int is read atomically by a handler on Linux.
volatile std::sig_atomic_t pipeForSignals = -1;

// Only async-signal-safe calls here: one write, errno kept for the code it interrupted.
extern "C" void onSignal(int signal)
{
    const int saved = errno;
    const auto number = static_cast<unsigned char>(signal);
    if (pipeForSignals >= 0) {
        const auto written = ::write(pipeForSignals, &number, 1);
        (void)written; // a full pipe already holds a request to quit
    }
    errno = saved;
}

} // namespace

QuitSignals::QuitSignals(std::function<void(int)> quit, QObject* parent) : QObject(parent), quit_(std::move(quit))
{
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    readFd_ = fds[0];
    writeFd_ = fds[1];
    pipeForSignals = writeFd_;
    notifier_ = new QSocketNotifier(readFd_, QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &QuitSignals::readPending);

    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // SA_RESETHAND: the first one asks for a quit, a second one ends the program at once.
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    for (std::size_t i = 0; i < std::size(handled); ++i)
        ::sigaction(handled[i], &action, &previous_[i]);
}

QuitSignals::~QuitSignals()
{
    if (writeFd_ < 0)
        return;
    for (std::size_t i = 0; i < std::size(handled); ++i)
        ::sigaction(handled[i], &previous_[i], nullptr);
    pipeForSignals = -1;
    delete notifier_;
    ::close(writeFd_);
    ::close(readFd_);
}

void QuitSignals::readPending()
{
    unsigned char numbers[16];
    ssize_t count = 0;
    while ((count = ::read(readFd_, numbers, sizeof numbers)) > 0) {
        for (ssize_t i = 0; i < count; ++i)
            quit_(numbers[i]);
    }
}

} // namespace orbisk
