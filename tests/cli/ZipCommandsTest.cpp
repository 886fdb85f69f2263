#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "support/Processes.h"
#include "support/TempTree.h"

extern char** environ;

namespace orbisk {
namespace {

namespace fs = std::filesystem;
using test::TempTree;

class ZipCommands : public testing::Test {
protected:
    ZipCommands() { tree.folder("work"); }

    test::ProcessResult cli(std::vector<std::string> arguments)
    {
        return test::cliInTree(tree.root(), std::move(arguments));
    }

    // Starts orbisk-cli in the work folder, interrupts it with SIGINT once `appears` exists, and
    // returns its exit status and what it wrote on stderr.
    std::pair<int, std::string> interrupted(const std::vector<std::string>& arguments, const fs::path& folder,
                                            const std::string& prefix)
    {
        std::vector<std::string> all{test::binary("orbisk-cli").native()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (auto& a : all)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        const auto errPath = tree / "stderr.txt";
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addchdir_np(&actions, (tree / "work").c_str());
        posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        pid_t pid = 0;
        const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (spawned != 0)
            return {-1, "cannot start orbisk-cli"};
        // Waits for the operation's first trace on disk, so that the signal lands mid-way.
        for (bool seen = false; !seen;) {
            for (const auto& entry : fs::directory_iterator(folder))
                seen = seen || entry.path().filename().native().starts_with(prefix);
            int status = 0;
            if (!seen && ::waitpid(pid, &status, WNOHANG) == pid)
                return {-1, "finished before it could be interrupted"};
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ::kill(pid, SIGINT);
        int status = 0;
        ::waitpid(pid, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, tree.read("stderr.txt")};
    }

    // A file of 256 MiB of zeros that costs no disk: long enough to compress and extract that a
    // signal always arrives in the middle.
    void sparseZeros(const std::string& relative)
    {
        const auto path = tree / relative;
        fs::create_directories(path.parent_path());
        const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY, 0644);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::ftruncate(fd, off_t{1} << 30), 0);
        ::close(fd);
    }

    TempTree tree;
};

TEST_F(ZipCommands, ZipAndExtractPrintWhatTheyCreatedAndUndoThroughTheHistory)
{
    tree.file("work/Docs/a.txt", "alpha");
    tree.file("work/Docs/sub/b\xE9.txt", "beta");
    const auto work = (tree / "work").native();

    auto zipped = cli({"zip", "--record", "h.json", "Docs", "Docs.zip"});
    ASSERT_EQ(zipped.exitCode, 0) << zipped.err;
    EXPECT_EQ(zipped.out, work + "/Docs.zip\n");
    auto again = cli({"zip", "Docs", "Docs.zip"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.err.find("Couldn’t create the archive “Docs.zip”: File exists."), std::string::npos) << again.err;

    auto extracted = cli({"extract", "--record", "h.json", "Docs.zip", "."});
    ASSERT_EQ(extracted.exitCode, 0) << extracted.err;
    EXPECT_EQ(extracted.out, work + "/Docs 2\n") << "the name was taken by the source folder";
    EXPECT_EQ(tree.read("work/Docs 2/sub/b\xE9.txt"), "beta");

    auto listed = cli({"ziplist", "Docs.zip"});
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    EXPECT_EQ(listed.out, "stored             0          0 00000000  Docs/\n"
                          "deflated           7          5 d0e0396a  Docs/a.txt\n"
                          "stored             0          0 00000000  Docs/sub/\n"
                          "deflated           6          4 8f910463  Docs/sub/b\\xE9.txt\n")
        << listed.out;

    EXPECT_EQ(cli({"undo", "--record", "h.json"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(tree / "work/Docs 2"));
    EXPECT_EQ(cli({"undo", "--record", "h.json"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(tree / "work/Docs.zip"));
    EXPECT_EQ(cli({"redo", "--record", "h.json"}).exitCode, 0);
    EXPECT_TRUE(fs::exists(tree / "work/Docs.zip"));
    EXPECT_EQ(tree.read("work/Docs/a.txt"), "alpha");
}

TEST_F(ZipCommands, ProblemsAreReportedLikeTheAppsAlertWithTheFailureStatus)
{
    if (!test::haveProgram("python3"))
        GTEST_SKIP() << "python3 is needed to build the hostile archives";
    const auto made =
        test::run({"python3", ORBISK_SOURCE_DIR "/tests/core/zip/hostile_archives.py", (tree / "hostile").native()});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const auto archive = (tree / "hostile/encrypted-and-method.zip").native();

    const auto listed = cli({"ziplist", archive});
    EXPECT_EQ(listed.exitCode, 1);
    EXPECT_NE(listed.out.find("method 12"), std::string::npos) << listed.out;
    EXPECT_EQ(listed.err, "“secret.txt” is encrypted; encrypted archives are not supported.\n"
                          "“m12.txt” uses compression method 12, which is not supported.\n");

    const auto extracted = cli({"extract", archive, "."});
    EXPECT_EQ(extracted.exitCode, 1);
    EXPECT_EQ(extracted.out, (tree / "work/encrypted-and-method").native() + "\n");
    EXPECT_NE(extracted.err.find("Extract finished with 2 problems."), std::string::npos) << extracted.err;

    const auto notZip = cli({"extract", ORBISK_SOURCE_DIR "/tests/core/zip/hostile_archives.py", "."});
    EXPECT_EQ(notZip.exitCode, 1);
    EXPECT_NE(notZip.err.find("The file is not a ZIP archive or is damaged."), std::string::npos);
    EXPECT_EQ(cli({"extract", "only-one-argument"}).exitCode, 2);
    EXPECT_EQ(cli({"zip", "nothing-to-zip.zip"}).exitCode, 2);
}

TEST_F(ZipCommands, CtrlCCancelsCleanlyInBothDirections)
{
    sparseZeros("work/zeros/zeros.img");
    auto [status, err] = interrupted({"zip", "zeros", "zeros.zip"}, tree / "work", "zeros.zip");
    EXPECT_EQ(status, 1) << err;
    EXPECT_NE(err.find("The operation was cancelled."), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(tree / "work/zeros.zip")) << "no partial archive";

    ASSERT_EQ(cli({"zip", "zeros", "whole.zip"}).exitCode, 0);
    const auto out = tree.folder("work/out");
    std::tie(status, err) = interrupted({"extract", "whole.zip", "out"}, out, ".ob-extract-");
    EXPECT_EQ(status, 1) << err;
    EXPECT_NE(err.find("The operation was cancelled."), std::string::npos) << err;
    EXPECT_TRUE(fs::is_empty(out)) << "no staging folder, nothing extracted";
}

} // namespace
} // namespace orbisk
