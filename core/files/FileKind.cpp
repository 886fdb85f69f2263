#include "files/FileKind.h"

#include "support/L10n.h"

namespace orbisk::FileKind {

std::string describe(const FileItem& item, const TypeDescriptionLookup& lookup)
{
    if (item.isParentLink)
        return {};
    if (item.isDirectory)
        return item.isSymbolicLink ? L(translate("Orbisk", "Folder (link)")) : L(translate("Orbisk", "Folder"));
    if (const auto extension = item.typeExtension(); !extension.empty() && lookup) {
        if (auto description = lookup(extension); description && !description->empty())
            return item.isSymbolicLink ? L(translate("Orbisk", "%@ (link)"), *description) : std::move(*description);
    }
    if (item.isPackage)
        return L(translate("Orbisk", "Package"));
    if (item.isSymbolicLink)
        return L(translate("Orbisk", "Link"));
    return L(translate("Orbisk", "Document"));
}

} // namespace orbisk::FileKind
