#include "support/L10n.h"

#include <atomic>

#include "support/DisplayText.h"
#include "support/FormatSpecifier.h"

namespace orbisk::L10n {
namespace {
std::atomic<bool> rightToLeft{false};
} // namespace

void setRightToLeft(bool value)
{
    rightToLeft = value;
}
bool isRightToLeft()
{
    return rightToLeft;
}

std::string format(std::string_view text, const std::vector<FormatArgument>& arguments)
{
    std::string out;
    std::size_t copied = 0;
    std::size_t next = 0;
    for (const auto& spec : findFormatSpecifiers(text)) {
        out += text.substr(copied, spec.offset - copied);
        copied = spec.offset + spec.length;
        if (spec.conversion == '%') {
            out += '%';
            continue;
        }
        const std::size_t index = spec.position ? static_cast<std::size_t>(*spec.position - 1) : next++;
        if (index >= arguments.size()) {
            out += text.substr(spec.offset, spec.length);
            continue;
        }
        const auto& argument = arguments[index];
        if (const auto* number = std::get_if<long long>(&argument))
            out += std::to_string(*number);
        else
            out += DisplayText::isolatedArgument(std::get<std::string>(argument), isRightToLeft());
    }
    out += text.substr(copied);
    return out;
}

} // namespace orbisk::L10n
