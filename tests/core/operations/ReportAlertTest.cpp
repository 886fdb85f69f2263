#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "operations/FileOperationError.h"
#include "operations/ReportAlert.h"
#include "support/L10n.h"

namespace orbisk {
namespace {

using E = FileOperationError;

const std::string permissionParagraph =
    "Orbisk may not have permission to use this location. On Linux, each item has an owner and permissions that say "
    "who may read it, change it and, for a folder, open it; only the owner or an administrator can change them. "
    "Inside a sandbox such as Flatpak, Orbisk also needs to be granted access to the folder. You can review the "
    "owner and permissions in the item’s Properties.";

ItemFailure missing(int i)
{
    const std::string path = "/f/item" + std::to_string(i);
    return {path, E::itemMissing(path)};
}

std::string missingLine(int i)
{
    return "• “item" + std::to_string(i) +
           "” no longer exists. It may have been moved or deleted by another application.";
}

TEST(ReportAlert, ShowsNothingForSuccessSkipsOrAPlainCancellation)
{
    OperationReport report;
    EXPECT_FALSE(ReportAlert::forReport(report, "Copy"));
    report.completed.push_back({"/a", "/b"});
    report.skipped.push_back("/c");
    EXPECT_TRUE(report.isCompleteSuccess()) << "skips do not spoil success";
    EXPECT_FALSE(ReportAlert::forReport(report, "Copy"));
    report.cancelled = true;
    EXPECT_FALSE(report.isCompleteSuccess());
    EXPECT_FALSE(ReportAlert::forReport(report, "Copy")) << "a plain cancellation is silent";
}

TEST(ReportAlert, ListsCountsCancellationAndFailures)
{
    OperationReport report;
    report.completed.push_back({"/a", "/b"});
    report.skipped.push_back("/c");
    report.cancelled = true;
    report.failures.push_back(missing(1));
    const auto alert = ReportAlert::forReport(report, "Copy");
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title, "Copy finished with 1 problems.");
    EXPECT_EQ(alert->body, "Completed: 1. Skipped: 1. Failed: 1.\nThe operation was cancelled.\n" + missingLine(1));
    ASSERT_EQ(alert->buttons.size(), 1U);
    EXPECT_EQ(alert->buttons[0].text, "OK");
    EXPECT_FALSE(alert->propertiesItem);
}

TEST(ReportAlert, ListsEightFailuresAndCountsTheRest)
{
    for (int count : {8, 9, 20}) {
        SCOPED_TRACE(count);
        OperationReport report;
        for (int i = 1; i <= count; ++i)
            report.failures.push_back(missing(i));
        const auto alert = ReportAlert::forReport(report, "Move");
        ASSERT_TRUE(alert);
        std::string expected = "Completed: 0. Skipped: 0. Failed: " + std::to_string(count) + ".";
        for (int i = 1; i <= 8; ++i)
            expected += "\n" + missingLine(i);
        if (count > 8)
            expected += "\n…and " + std::to_string(count - 8) + " more.";
        EXPECT_EQ(alert->body, expected);
    }
}

TEST(ReportAlert, AnAbortReasonLeadsTheBodyAndNamesTheTitle)
{
    OperationReport report;
    report.abortReason = "The destination volume is full.";
    report.completed.push_back({"/a", "/b"});
    const auto alert = ReportAlert::forReport(report, "Copy");
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title, "Copy stopped before finishing.");
    EXPECT_EQ(alert->body, "The destination volume is full.\nCompleted: 1. Skipped: 0. Failed: 0.");
}

TEST(ReportAlert, APermissionProblemAddsTheParagraphAndThePropertiesButton)
{
    struct Case {
        const char* name;
        AnyError error;
        bool permission;
    };
    const std::vector<Case> cases = {
        {"system EACCES", E::system(EACCES, "copy", "/f/locked"), true},
        {"system EPERM", E::system(EPERM, "copy", "/f/locked"), true},
        {"POSIX code", std::error_code(EACCES, std::generic_category()), true},
        {"no such file", E::system(ENOENT, "copy", "/f/locked"), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        OperationReport report;
        report.failures.push_back(missing(1));
        report.failures.push_back({"/f/locked", c.error});
        const auto alert = ReportAlert::forReport(report, "Copy");
        ASSERT_TRUE(alert);
        const std::string head =
            "Completed: 0. Skipped: 0. Failed: 2.\n" + missingLine(1) + "\n• " + c.error.description();
        if (c.permission) {
            EXPECT_EQ(alert->body, head + "\n\n" + permissionParagraph);
            ASSERT_EQ(alert->buttons.size(), 2U);
            EXPECT_EQ(alert->buttons[1].text, "Show Properties");
            EXPECT_EQ(alert->buttons[1].role, ReportAlert::ButtonRole::showProperties);
            EXPECT_EQ(alert->propertiesItem, std::filesystem::path("/f/locked"));
        } else {
            EXPECT_EQ(alert->body, head);
            EXPECT_EQ(alert->buttons.size(), 1U);
            EXPECT_FALSE(alert->propertiesItem);
        }
    }

    OperationReport two;
    two.failures.push_back({"/f/first", E::system(EACCES, "copy", "/f/first")});
    two.failures.push_back({"/f/second", E::system(EPERM, "copy", "/f/second")});
    const auto alert = ReportAlert::forReport(two, "Copy");
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->propertiesItem, std::filesystem::path("/f/first")) << "the first refused item";
    EXPECT_EQ(alert->body.find(permissionParagraph), alert->body.rfind(permissionParagraph)) << "said once";
}

struct RawError {
    std::string text;
    [[nodiscard]] std::string errorDescription() const { return text; }
};

TEST(ReportAlert, MakesHiddenCharactersOfMessagesVisibleButKeepsTheIsolatesAroundNames)
{
    OperationReport report;
    report.failures.push_back({"/x", RawError{"bad \xE9 name\u202Etxt.exe"}});
    L10n::setRightToLeft(true);
    const auto isolated = E::itemExists("name").errorDescription();
    report.failures.push_back({"/y", E::itemExists("name")});
    const auto alert = ReportAlert::forReport(report, "Copy");
    L10n::setRightToLeft(false);
    ASSERT_TRUE(alert);
    ASSERT_NE(isolated.find("\u2068name\u2069"), std::string::npos) << isolated;
    EXPECT_NE(alert->body.find("• bad \\xE9 name\\u{202E}txt.exe\n"), std::string::npos) << alert->body;
    EXPECT_NE(alert->body.find("• " + isolated), std::string::npos) << alert->body;
}

} // namespace
} // namespace orbisk
