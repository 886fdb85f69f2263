// The folders the user visited last, newest first, without repeats.
#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>

namespace orbisk {

class RecentLocations {
public:
    explicit RecentLocations(std::size_t capacity = 10) : capacity_(capacity) {}

    /// Puts folder first; an earlier visit of it is dropped and the oldest falls off past capacity.
    void visit(const std::filesystem::path& folder);
    [[nodiscard]] const std::deque<std::filesystem::path>& folders() const { return folders_; }

private:
    std::size_t capacity_;
    std::deque<std::filesystem::path> folders_;
};

} // namespace orbisk
