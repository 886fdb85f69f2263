#include "Unprivileged.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orbisk::test {

std::expected<std::string, std::string> runUnprivileged(const std::function<std::string()>& body)
{
    if (::geteuid() != 0)
        return std::unexpected("needs root to become another user");
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0)
        return std::unexpected("pipe failed");
    const pid_t pid = ::fork();
    if (pid < 0)
        return std::unexpected("fork failed");
    if (pid == 0) {
        ::close(channel[0]);
        if (::setgroups(0, nullptr) != 0 || ::setgid(nobodyId) != 0 || ::setuid(nobodyId) != 0)
            ::_exit(3);
        const std::string result = body();
        std::size_t written = 0;
        while (written < result.size()) {
            const auto n = ::write(channel[1], result.data() + written, result.size() - written);
            if (n <= 0)
                ::_exit(4);
            written += static_cast<std::size_t>(n);
        }
        ::_exit(0);
    }
    ::close(channel[1]);
    std::string result;
    char buffer[4096];
    ssize_t n;
    while ((n = ::read(channel[0], buffer, sizeof buffer)) > 0)
        result.append(buffer, static_cast<std::size_t>(n));
    ::close(channel[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::unexpected("the unprivileged child failed with status " + std::to_string(status));
    return result;
}

} // namespace orbisk::test
