#include "zip/ZipError.h"

#include "support/L10n.h"

namespace orbisk {

std::string ZipError::errorDescription() const
{
    switch (kind) {
    case Kind::encrypted:
        return L(translate("Orbisk", "“%@” is encrypted; encrypted archives are not supported."), name);
    case Kind::unsupportedMethod:
        return L(translate("Orbisk", "“%@” uses compression method %lld, which is not supported."), name,
                 static_cast<long long>(method));
    case Kind::corrupt: return L(translate("Orbisk", "“%@” is damaged in the archive."), name);
    case Kind::checksumMismatch:
        return L(translate("Orbisk", "“%@” failed its checksum; the archive may be damaged."), name);
    case Kind::unsafePath:
        return L(translate("Orbisk", "“%@” has an unsafe path (absolute or containing “..”) and was not extracted."),
                 name);
    case Kind::unsafeLink:
        return L(translate("Orbisk", "The symbolic link “%@” points outside the extracted folder and was not created."),
                 name);
    case Kind::tooLarge:
        return L(translate("Orbisk", "“%@” is 4 GB or larger, which needs ZIP64 (not supported)."), name);
    case Kind::notAZip: return translate("Orbisk", "The file is not a ZIP archive or is damaged.");
    case Kind::zip64Unsupported:
        return translate("Orbisk",
                         "ZIP64 archives (larger than 4 GB or with more than 65,535 entries) are not supported.");
    case Kind::dateOutOfRange:
        return L(translate("Orbisk", "“%@” has a modification date after 2107, which a ZIP archive can’t hold."), name);
    }
    return {};
}

} // namespace orbisk
