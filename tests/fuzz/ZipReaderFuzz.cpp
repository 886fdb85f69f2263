// libFuzzer target for the ZIP reader: any bytes as an archive, listed, read member by member and
// extracted into a scratch folder. Crashes, sanitizer reports and leaks are the findings; a
// refusal is a fine answer.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "zip/StagingTree.h"
#include "zip/ZipReader.h"

namespace {

namespace fs = std::filesystem;

// One scratch folder per fuzzing process, under $TMPDIR.
const fs::path& scratch()
{
    static const fs::path folder = [] {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/orbisk-fuzz-zip-XXXXXX";
        if (!::mkdtemp(pattern.data()))
            std::abort();
        return fs::path(pattern);
    }();
    return folder;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace orbisk;
    const fs::path archive = scratch() / "input.zip";
    {
        const int fd = ::open(archive.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0 || ::write(fd, data, size) != static_cast<ssize_t>(size))
            std::abort();
        ::close(fd);
    }
    CancellationToken token;
    {
        const int fd = ::open(archive.c_str(), O_RDONLY | O_CLOEXEC);
        if (auto list = ZipReader::entries(fd)) {
            std::optional<DeflateStream> inflater;
            for (const auto& entry : *list)
                (void)ZipReader::readData(
                    fd, entry, token, [](std::string_view) { return 0; }, &inflater);
        }
        ::close(fd);
    }
    const fs::path out = scratch() / "out";
    ::mkdir(out.c_str(), 0700);
    OperationProgressTracker progress;
    (void)ZipReader::extract(archive, out, token, progress);
    const int outFd = ::open(scratch().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    removeTreeAt(outFd, "out");
    ::close(outFd);
    return 0;
}
