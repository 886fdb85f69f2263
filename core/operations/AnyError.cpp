#include "operations/AnyError.h"

#include <cerrno>

namespace orbisk {

bool AnyError::isPermissionCode(int code)
{
    return code == EACCES || code == EPERM;
}

bool AnyError::isPosix(const std::error_code& code)
{
    return code.category() == std::generic_category() || code.category() == std::system_category();
}

} // namespace orbisk
