// What comes back at the next start: both panes' tabs and sorts, the active side, the divider.
#pragma once

#include "files/SortSpec.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

struct TabSession {
    std::filesystem::path path;
    SortSpec sort;
};

struct PaneSession {
    std::vector<TabSession> tabs;
    int activeTab = 0;
};

struct SessionState {
    PaneSession left;
    PaneSession right;
    bool activeIsRight = false;
    double dividerRatio = 0.5; ///< the left pane's share of the width
};

namespace SessionCoding {

/// The session as JSON: {"left":{"tabs":[{"path":…,"sort":{"column":…,"ascending":…}}],"activeTab":0},
/// "right":…,"activeIsRight":false,"dividerRatio":0.5}. A folder whose path is not UTF-8 is saved
/// as its nearest enclosing folder that is, since JSON text cannot hold the raw bytes.
[[nodiscard]] std::string encode(const SessionState& state);

/// The session read back, or nothing when the text is not a complete session (then the panes
/// start at their defaults). Relative paths are refused; the active tab index is kept in range.
[[nodiscard]] std::optional<SessionState> decode(std::string_view json);

} // namespace SessionCoding
} // namespace orbisk
