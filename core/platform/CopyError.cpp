#include "platform/CopyError.h"

#include <cerrno>

namespace orbisk {

bool CopyError::isVolumeFull() const
{
    return kind == Kind::system && (code == ENOSPC || code == EDQUOT);
}

std::string_view stepName(CopyStep step)
{
    switch (step) {
    case CopyStep::inspectSource: return "inspect the source";
    case CopyStep::openSource: return "open the source";
    case CopyStep::readSource: return "read the source";
    case CopyStep::createDestination: return "create the destination";
    case CopyStep::writeDestination: return "write the destination";
    case CopyStep::setAttributes: return "set the attributes";
    case CopyStep::setTimes: return "set the times";
    case CopyStep::readLink: return "read the link";
    case CopyStep::createLink: return "create the link";
    case CopyStep::createFolder: return "create the folder";
    case CopyStep::rename: return "rename";
    }
    return "copy";
}

} // namespace orbisk
