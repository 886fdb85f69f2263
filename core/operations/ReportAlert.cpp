#include "operations/ReportAlert.h"

#include <algorithm>

#include "support/DisplayText.h"
#include "support/L10n.h"

namespace orbisk {

namespace {

// A failure's message with every invisible or direction-changing character made visible, except
// the isolates that L() put around names on purpose: they keep a name from reordering the line.
std::string sanitisedMessage(std::string_view message)
{
    constexpr std::string_view isolates[] = {"\u2066", "\u2067", "\u2068", "\u2069"};
    std::string out;
    std::size_t start = 0;
    while (start <= message.size()) {
        std::size_t next = std::string_view::npos;
        for (const auto isolate : isolates)
            next = std::min(next, message.find(isolate, start));
        out += DisplayText::visible(message.substr(start, next == std::string_view::npos ? next : next - start));
        if (next == std::string_view::npos)
            break;
        out += message.substr(next, 3); // every isolate is three bytes of UTF-8
        start = next + 3;
    }
    return out;
}

} // namespace

std::optional<ReportAlert> ReportAlert::forReport(const OperationReport& report, std::string_view verb)
{
    if (report.isCompleteSuccess())
        return std::nullopt;
    if (report.cancelled && report.failures.empty() && !report.abortReason)
        return std::nullopt;

    ReportAlert alert;
    alert.title = report.abortReason
                      ? L(translate("Orbisk", "%@ stopped before finishing."), verb)
                      : L(translate("Orbisk", "%@ finished with %lld problems."), verb, report.failures.size());

    std::vector<std::string> lines;
    if (report.abortReason)
        lines.push_back(*report.abortReason);
    lines.push_back(L(translate("Orbisk", "Completed: %lld. Skipped: %lld. Failed: %lld."), report.completed.size(),
                      report.skipped.size(), report.failures.size()));
    if (report.cancelled)
        lines.push_back(translate("Orbisk", "The operation was cancelled."));
    for (std::size_t i = 0; i < report.failures.size() && i < listedFailures; ++i)
        lines.push_back("• " + sanitisedMessage(report.failures[i].message()));
    if (report.failures.size() > listedFailures)
        lines.push_back(L(translate("Orbisk", "…and %lld more."), report.failures.size() - listedFailures));

    const auto refused = std::find_if(report.failures.begin(), report.failures.end(),
                                      [](const ItemFailure& failure) { return failure.error.isPermissionDenied(); });
    if (refused != report.failures.end()) {
        // A leading line break sets the paragraph apart by a blank line.
        lines.push_back("\n" + translate("Orbisk",
                                         "Orbisk may not have permission to use this location. On Linux, each item "
                                         "has an owner and permissions that say who may read it, change it and, for "
                                         "a folder, open it; only the owner or an administrator can change them. "
                                         "Inside a sandbox such as Flatpak, Orbisk also needs to be granted access to "
                                         "the folder. You can review the owner and permissions in the item’s "
                                         "Properties."));
        alert.propertiesItem = refused->url;
    }

    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0)
            alert.body += '\n';
        alert.body += lines[i];
    }
    alert.buttons.push_back({translate("Orbisk", "OK"), ButtonRole::close});
    if (alert.propertiesItem)
        alert.buttons.push_back({translate("Orbisk", "Show Properties"), ButtonRole::showProperties});
    return alert;
}

} // namespace orbisk
