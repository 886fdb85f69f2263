#include "Processes.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

extern char** environ;

namespace orbisk::test {

namespace {
void drain(int fd, std::string& into)
{
    char buffer[65536];
    const auto n = ::read(fd, buffer, sizeof buffer);
    if (n > 0)
        into.append(buffer, static_cast<std::size_t>(n));
}
} // namespace

ProcessResult cliInTree(const std::filesystem::path& root, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), binary("orbisk-cli").native());
    return run(arguments, root / "work",
               {"HOME=" + (root / "home").native(), "XDG_DATA_HOME=" + (root / "data").native()});
}

ProcessResult run(const std::vector<std::string>& arguments, const std::filesystem::path& workingFolder,
                  const std::vector<std::string>& environment)
{
    ProcessResult result;
    int outPipe[2];
    int errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0)
        return result;

    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        const int devnull = ::open("/dev/null", O_RDONLY);
        ::dup2(devnull, 0);
        if (!workingFolder.empty() && ::chdir(workingFolder.c_str()) != 0)
            ::_exit(127);
        for (const auto& entry : environment)
            ::putenv(const_cast<char*>(entry.c_str()));
        std::vector<char*> argv;
        for (const auto& a : arguments)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0) {
        if (::poll(fds, 2, -1) < 0)
            break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            std::string& into = i == 0 ? result.out : result.err;
            const auto before = into.size();
            drain(fds[i].fd, into);
            if (into.size() == before) {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

bool haveProgram(const std::string& name)
{
    return run({"sh", "-c", "command -v \"$0\" >/dev/null", name}).exitCode == 0;
}

std::filesystem::path binary(const std::string& name)
{
    return std::filesystem::path(ORBISK_BIN_DIR) / name;
}

} // namespace orbisk::test
