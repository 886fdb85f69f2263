// Shows a finished operation's report alert, and the item's properties when asked from it.
#pragma once

#include "operations/OperationReport.h"
#include "operations/ReportAlert.h"

#include <filesystem>
#include <string_view>

class QMessageBox;
class QWidget;

namespace orbisk::ReportAlertBox {

/// Shows the alert for report with open() (nothing for a clean success or a plain cancellation)
/// and returns it, or null when there is none. Its Show Properties button opens the properties of
/// the item that was refused.
QMessageBox* present(const OperationReport& report, std::string_view verb, QWidget* window);

/// The alert itself, shown with open().
QMessageBox* show(const ReportAlert& alert, QWidget* window);

/// A small window with an item's kind, owner, group and permissions (one status query).
void showProperties(const std::filesystem::path& item, QWidget* window);

} // namespace orbisk::ReportAlertBox
