#include "windows/CommandKeys.h"

#include "shortcuts/ShortcutCatalog.h"

namespace orbisk::CommandKeys {

QList<QKeySequence> keys(ShortcutCommand command)
{
    QList<QKeySequence> sequences;
    for (const auto& portable : ShortcutCatalog::keys(command)) {
        const QKeySequence sequence(QString::fromStdString(portable), QKeySequence::PortableText);
        if (!sequence.isEmpty())
            sequences.append(sequence);
    }
    return sequences;
}

} // namespace orbisk::CommandKeys
