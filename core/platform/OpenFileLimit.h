// The process's limit of open files, raised once at start.
#pragma once

namespace orbisk::OpenFileLimit {

/// Raises the soft limit of open files (RLIMIT_NOFILE) to the hard limit, as many tools do at
/// start: the soft default of 1,024 is a relic of select(), which this program does not use, and
/// deep trees and many parallel file copies need more. Returns the soft limit in force afterwards.
/// Call once, early in main(), before threads start.
long raiseToHardLimit();

} // namespace orbisk::OpenFileLimit
