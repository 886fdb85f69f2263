// The keys of every window command, read from the shortcut catalog so menus and help agree.
#pragma once

#include <QKeySequence>
#include <QList>

#include "shortcuts/ShortcutCommand.h"

namespace orbisk::CommandKeys {

/// The key sequences the catalog binds to command, in table order; none when the view handles the
/// command without a key of its own.
[[nodiscard]] QList<QKeySequence> keys(ShortcutCommand command);

} // namespace orbisk::CommandKeys
