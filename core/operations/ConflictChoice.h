// The answers to a name clash during a copy or move, with the words settings and presets store.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace orbisk {

/// In declaration order; rawValue gives the stored word, which equals the case name.
enum class ConflictChoice : std::uint8_t {
    skip,               ///< leave the existing item; the source is not processed
    keepBoth,           ///< give the incoming item the next free Keep Both name
    cancel,             ///< stop the whole operation
    replace,            ///< the new item takes the place; the existing one goes to the Trash
    replaceIfOlder,     ///< replace only when the existing item is older than the source
    replaceIfDifferent, ///< replace only when type, size or time differ, otherwise skip
    renameExisting,     ///< replace, keeping the existing item aside under its "(old)" name
    merge,              ///< merge the incoming folder into the existing folder
};

/// The stored word of a choice ("skip", "keepBoth", …).
[[nodiscard]] std::string_view rawValue(ConflictChoice choice);

/// The choice a stored word names, or nothing for an unknown word (compared exactly).
[[nodiscard]] std::optional<ConflictChoice> conflictChoiceFromRaw(std::string_view raw);

/// Whether the choice may be applied when source and existing are the same item: only skip,
/// keepBoth and cancel, since every other choice would destroy the source itself.
[[nodiscard]] constexpr bool isSafeForSameItem(ConflictChoice choice)
{
    return choice == ConflictChoice::skip || choice == ConflictChoice::keepBoth || choice == ConflictChoice::cancel;
}

} // namespace orbisk
