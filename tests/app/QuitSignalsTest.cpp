// Quitting through a signal: the real program, and a window with a copy under way.
#include "QuitSignals.h"
#include "Startup.h"
#include "WindowHarness.h"
#include "operations/OperationRunner.h"
#include "support/Processes.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace orbisk::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Whether the process has a handler of its own for signal (the SigCgt mask of /proc/PID/status).
bool catches(pid_t pid, int signal)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("SigCgt:"))
            return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1) != 0;
    return false;
}

/// The exit status of a normal exit, -signal when a signal ended it, or nothing when it did not end in time.
std::optional<int> waitForExit(pid_t pid, std::chrono::seconds patience)
{
    for (const auto end = std::chrono::steady_clock::now() + patience; std::chrono::steady_clock::now() < end;) {
        int status = 0;
        if (::waitpid(pid, &status, WNOHANG) == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        std::this_thread::sleep_for(20ms);
    }
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    return std::nullopt;
}

TEST(QuitSignalsTest, EachSignalQuitsTheProgramAndItsSessionIsSaved)
{
    const auto program = binary("orbisk");
    if (!fs::exists(program))
        GTEST_SKIP() << "orbisk is not built";
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(strsignal(signal));
        TempTree tree;
        tree.folder("home/Documents");
        tree.folder("config");
        const std::vector<std::string> environment = {
            "HOME=" + (tree / "home").native(),
            "XDG_CONFIG_HOME=" + (tree / "config").native(),
            "XDG_DATA_HOME=" + (tree / "data").native(),
            "XDG_STATE_HOME=" + (tree / "state").native(),
            "QT_QPA_PLATFORM=offscreen",
        };
        const pid_t pid = ::fork();
        if (pid == 0) {
            const int quiet = ::open("/dev/null", O_RDWR);
            ::dup2(quiet, 0);
            ::dup2(quiet, 1);
            ::dup2(quiet, 2);
            for (const auto& entry : environment)
                ::putenv(const_cast<char*>(entry.c_str()));
            ::execl(program.c_str(), program.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ASSERT_GT(pid, 0);
        // Sending the signal before the program handles it would test nothing but the default.
        for (const auto end = std::chrono::steady_clock::now() + 30s;
             !catches(pid, signal) && std::chrono::steady_clock::now() < end;)
            std::this_thread::sleep_for(20ms);
        EXPECT_TRUE(catches(pid, signal)) << "the program never took the signal over";
        ::kill(pid, signal);

        const auto status = waitForExit(pid, 60s);
        ASSERT_TRUE(status) << "the program did not quit";
        EXPECT_EQ(*status, 0) << "a negative status is the signal that ended the program where it stood";
        std::ifstream settings(tree / "config/Orbisk/Orbisk.conf");
        const std::string saved((std::istreambuf_iterator<char>(settings)), std::istreambuf_iterator<char>());
        EXPECT_NE(saved.find("session="), std::string::npos) << saved;
        EXPECT_NE(saved.find((tree / "home").native()), std::string::npos) << "the panes' folders are in it";
    }
}

class QuitSignalsWindowTest : public WindowTest {};

TEST_F(QuitSignalsWindowTest, ASignalDuringACopyClosesTheWindowAndTheCopyLeavesNothingBehind)
{
    home_.file("src/large.bin", std::string(std::size_t{128} << 20, 'x'));
    const auto dst = home_.folder("dst");
    openPanes("src", "dst");
    TransferRequest request;
    request.sources = {home_ / "src/large.bin"};
    request.into = dst;
    // Small chunks keep the copy inside the file long enough for the signal.
    request.copyOptions.chunkBytes = 4096;
    request.copyOptions.largestChunkBytes = 4096;
    request.copyOptions.firstMethod = CopyMethod::copyFileRange;
    request.copyOptions.unnamedFile = false; // so that the partial copy shows under its hidden name
    window_->operations().transfer(std::move(request), window_.get(), [](const OperationReport&) {});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !fs::is_empty(dst); })) << "the copy has begun";

    const auto quitSignals = Startup::quitOnSignals(*window_);
    ASSERT_TRUE(quitSignals->isActive());
    settings_->setSession("");
    ::raise(SIGTERM);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_->isVisible(); })) << "the window closes as on Quit";
    EXPECT_NE(settings_->session(), "") << "the session was saved";
    ASSERT_EQ(window_->operations().runningCount(), 1u) << "the copy was still under way";

    // What follows the event loop's end: the window goes, and its operations with it.
    window_.reset();
    EXPECT_TRUE(fs::is_empty(dst)) << "the partial copy, hidden or not, is gone";
    EXPECT_EQ(fs::file_size(home_ / "src/large.bin"), std::uintmax_t{128} << 20);
}

} // namespace
} // namespace orbisk::test
