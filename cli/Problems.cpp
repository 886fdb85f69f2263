#include "Problems.h"

#include <iostream>

#include "Command.h"
#include "operations/ReportAlert.h"

namespace orbisk::cli {

int presentReport(const OperationReport& report, std::string_view verb)
{
    const auto alert = ReportAlert::forReport(report, verb);
    if (!alert)
        return exitSuccess;
    std::cerr << alert->title << "\n" << alert->body << "\n";
    return exitFailure;
}

int presentError(std::string_view title, const FileOperationError& error)
{
    std::cerr << title << "\n" << error.errorDescription() << "\n";
    return exitFailure;
}

} // namespace orbisk::cli
