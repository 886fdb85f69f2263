// How orbisk-cli shows a problem: the title and body the app's alert would show, on stderr.
#pragma once

#include <string_view>

#include "operations/FileOperationError.h"
#include "operations/OperationReport.h"

namespace orbisk::cli {

/// Prints the report's alert for verb (nothing for a clean success or a plain cancel) and returns
/// exitFailure when there was one, exitSuccess otherwise.
int presentReport(const OperationReport& report, std::string_view verb);

/// Prints an alert of the app's single-item commands: its title, then the error's message.
int presentError(std::string_view title, const FileOperationError& error);

} // namespace orbisk::cli
