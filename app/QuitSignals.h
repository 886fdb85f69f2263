// SIGTERM, SIGINT and SIGHUP turned into a quit on the main thread.
#pragma once

#include <QObject>

#include <csignal>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace orbisk {

/// While it lives, SIGTERM (a logout, `kill`, `systemctl --user stop`), SIGINT (Ctrl+C in the
/// terminal) and SIGHUP (the terminal went away) call quit on the main thread instead of ending the
/// process where it stands, so that the program can save its session and cancel and clean up its
/// running operations. The handler only writes the signal's number into a pipe, which a
/// QSocketNotifier reads on the main thread. Each signal is handled once: a second one of the same
/// kind ends the program at once, for when the orderly quit itself hangs. One instance at a time.
class QuitSignals : public QObject {
    Q_OBJECT

public:
    explicit QuitSignals(std::function<void(int signal)> quit, QObject* parent = nullptr);
    /// Puts back the handlers that were there before and closes the pipe.
    ~QuitSignals() override;
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

    /// Whether the pipe and the handlers could be set up (the program runs without them otherwise).
    [[nodiscard]] bool isActive() const { return notifier_ != nullptr; }

private:
    void readPending();

    std::function<void(int)> quit_;
    int readFd_ = -1;
    int writeFd_ = -1;
    QSocketNotifier* notifier_ = nullptr;
    struct sigaction previous_[3] = {};
};

} // namespace orbisk
