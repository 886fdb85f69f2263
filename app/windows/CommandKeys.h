// The keys of every window command, read from the shortcut catalog so menus and help agree.
#pragma once

#include <QKeySequence>
#include <QList>

#include <string_view>

namespace orbisk::CommandKeys {

/// The key sequences the catalog lists for the command with this identifier; none when the
/// catalog has no row for it.
[[nodiscard]] QList<QKeySequence> keys(std::string_view identifier);

} // namespace orbisk::CommandKeys
