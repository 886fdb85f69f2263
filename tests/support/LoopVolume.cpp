#include "LoopVolume.h"

#include <unistd.h>

#include "Processes.h"

namespace orbisk::test {

LoopVolume::LoopVolume(const std::filesystem::path& parent, int sizeMegabytes)
    : image_(parent / "volume.img"), mountPoint_(parent / "volume")
{
    if (::geteuid() != 0) {
        reason_ = "mounting a loop volume needs root";
        return;
    }
    std::filesystem::create_directories(mountPoint_);
    const auto steps = {
        std::vector<std::string>{"truncate", "-s", std::to_string(sizeMegabytes) + "M", image_.native()},
        std::vector<std::string>{"mkfs.ext4", "-q", "-F", image_.native()},
        std::vector<std::string>{"mount", "-o", "loop", image_.native(), mountPoint_.native()},
    };
    for (const auto& step : steps) {
        const auto result = run(step);
        if (result.exitCode != 0) {
            reason_ = "cannot make a loop volume: " + step.front() + " said " + result.err;
            return;
        }
    }
    mounted_ = true;
}

LoopVolume::~LoopVolume()
{
    if (mounted_)
        run({"umount", mountPoint_.native()});
    std::error_code ignored;
    std::filesystem::remove(image_, ignored);
}

} // namespace orbisk::test
