// An owned file descriptor, closed when it goes out of scope.
#pragma once

#include <unistd.h>

#include <cerrno>

#include <utility>

namespace orbisk {

/// Holds one open descriptor (or -1) and closes it on destruction. Movable, not copyable.
class OwnedFd {
public:
    OwnedFd() = default;
    explicit OwnedFd(int fd) : fd_(fd) {}
    ~OwnedFd() { reset(); }
    OwnedFd(OwnedFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    OwnedFd& operator=(OwnedFd&& other) noexcept
    {
        if (this != &other) {
            reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    OwnedFd(const OwnedFd&) = delete;
    OwnedFd& operator=(const OwnedFd&) = delete;

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool isOpen() const { return fd_ >= 0; }

    /// Closes the descriptor now. A close error on a descriptor we only read from or whose data
    /// was already handed to the kernel carries no information we could act on.
    void reset()
    {
        if (fd_ >= 0) {
            ::close(fd_);
            fd_ = -1;
        }
    }

    /// Closes the descriptor and says how that went: 0, or the errno of close(). Network file
    /// systems may only report a failed write here, so a file we wrote is closed through this.
    [[nodiscard]] int close()
    {
        const int fd = std::exchange(fd_, -1);
        if (fd >= 0 && ::close(fd) != 0 && errno != EINTR)
            return errno;
        return 0;
    }

private:
    int fd_ = -1;
};

} // namespace orbisk
