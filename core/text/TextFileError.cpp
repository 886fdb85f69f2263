#include "text/TextFileError.h"

#include "support/ByteCount.h"
#include "support/L10n.h"

#include <cerrno>
#include <cstring>

namespace orbisk {
namespace {

std::string systemText(int code)
{
    char buffer[256];
    // The GNU strerror_r: thread-safe, returns either buffer or a static text.
    return ::strerror_r(code, buffer, sizeof buffer);
}

std::string nameOf(const std::filesystem::path& path)
{
    const auto name = path.filename();
    return name.empty() ? path.native() : name.native();
}

} // namespace

std::string TextFileError::errorDescription() const
{
    switch (kind) {
    case Kind::tooLarge:
        return L(translate("Orbisk", "The file is too large to edit (%@; the limit is %@)."), formatByteCount(size),
                 formatByteCount(limit));
    case Kind::binary: return translate("Orbisk", "The file appears to be binary, not plain text.");
    case Kind::unsupportedEncoding:
        return translate(
            "Orbisk", "The file is not valid UTF-8 or BOM-marked UTF-16. To avoid corrupting it, it is not converted.");
    case Kind::modifiedOnDisk:
        return translate("Orbisk", "The file was changed by another application after it was opened.");
    case Kind::missingOnDisk:
        return translate("Orbisk", "The file was moved or deleted by another application after it was opened.");
    case Kind::cannotEncode: return translate("Orbisk", "The text can’t be represented in the file’s encoding.");
    case Kind::notRegularFile:
        return L(translate("Orbisk", "“%@” is not a regular file (it may be a folder, a pipe or a device)."),
                 nameOf(path));
    case Kind::system:
        if (action == "save")
            return L(translate("Orbisk", "Couldn’t save “%@”: %@."), nameOf(path), systemText(code));
        return L(translate("Orbisk", "Couldn’t read “%@”: %@."), nameOf(path), systemText(code));
    }
    return {};
}

bool TextFileError::isVolumeFull() const
{
    return kind == Kind::system && (code == ENOSPC || code == EDQUOT);
}

} // namespace orbisk
