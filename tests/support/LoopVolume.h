// A small ext4 volume mounted from an image file, for tests that need a second real volume.
#pragma once

#include <filesystem>
#include <string>

namespace orbisk::test {

/// Makes an image of sizeMegabytes in parent, formats it ext4 and loop-mounts it; unmounts and
/// removes it again on destruction. Needs root and loop devices: check available() and skip with
/// reason() otherwise.
class LoopVolume {
public:
    explicit LoopVolume(const std::filesystem::path& parent, int sizeMegabytes = 40);
    ~LoopVolume();
    LoopVolume(const LoopVolume&) = delete;
    LoopVolume& operator=(const LoopVolume&) = delete;

    [[nodiscard]] bool available() const { return mounted_; }
    [[nodiscard]] const std::string& reason() const { return reason_; }
    [[nodiscard]] const std::filesystem::path& mountPoint() const { return mountPoint_; }

private:
    std::filesystem::path image_;
    std::filesystem::path mountPoint_;
    bool mounted_ = false;
    std::string reason_;
};

} // namespace orbisk::test
