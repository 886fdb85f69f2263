// How a finished operation's report reaches the user: the one warning alert, or none.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operations/OperationReport.h"

namespace orbisk {

/// What the app shows, already worded; the app only lays it out.
struct ReportAlert {
    enum class ButtonRole {
        close,          ///< just closes the alert
        showProperties, ///< opens the Properties of propertiesItem
    };
    struct Button {
        std::string text;
        ButtonRole role = ButtonRole::close;
        bool operator==(const Button&) const = default;
    };

    std::string title;
    std::string body; ///< lines joined by single line breaks
    std::vector<Button> buttons;
    std::optional<std::filesystem::path> propertiesItem; ///< the first item refused for want of permission

    /// The alert for report, or nothing when it succeeded or was simply cancelled by the user. verb
    /// names the operation ("Copy", "Move to Trash"). At most eight failures are listed, each made
    /// visible; when one was a permission problem a paragraph on permissions and a second button
    /// that opens that item's Properties are added.
    [[nodiscard]] static std::optional<ReportAlert> forReport(const OperationReport& report, std::string_view verb);

    /// How many failures the body lists before "…and n more.".
    static constexpr std::size_t listedFailures = 8;
};

} // namespace orbisk
