#include "operations/FileUndoError.h"

#include "support/L10n.h"

namespace orbisk {

std::string FileUndoError::errorDescription() const
{
    switch (kind) {
    case Kind::changedSince:
        return L(translate("Orbisk", "“%@” changed after the operation, so it was left as it is."), name);
    case Kind::missing: return L(translate("Orbisk", "“%@” is no longer where the operation left it."), name);
    case Kind::placeTaken:
        return L(translate("Orbisk", "Another item named “%@” is now in its old place, so it was left where it is."),
                 name);
    case Kind::goneFromTrash:
        return L(translate("Orbisk", "“%@” is no longer in the Trash (it may have been emptied)."), name);
    case Kind::keptFolder:
        return L(translate("Orbisk", "“%@” still holds items that were left as they are, so it was left where it is."),
                 name);
    }
    return {};
}

} // namespace orbisk
