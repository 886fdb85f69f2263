#include "operations/ConflictChoice.h"

#include <array>
#include <utility>

namespace orbisk {
namespace {

constexpr std::array<std::pair<ConflictChoice, std::string_view>, 8> words = {{
    {ConflictChoice::skip, "skip"},
    {ConflictChoice::keepBoth, "keepBoth"},
    {ConflictChoice::cancel, "cancel"},
    {ConflictChoice::replace, "replace"},
    {ConflictChoice::replaceIfOlder, "replaceIfOlder"},
    {ConflictChoice::replaceIfDifferent, "replaceIfDifferent"},
    {ConflictChoice::renameExisting, "renameExisting"},
    {ConflictChoice::merge, "merge"},
}};

} // namespace

std::string_view rawValue(ConflictChoice choice)
{
    for (const auto& [candidate, word] : words)
        if (candidate == choice)
            return word;
    return {};
}

std::optional<ConflictChoice> conflictChoiceFromRaw(std::string_view raw)
{
    for (const auto& [choice, word] : words)
        if (word == raw)
            return choice;
    return std::nullopt;
}

} // namespace orbisk
