// The texts of the prompt that asks for a pattern to select or deselect items by.
#pragma once

#include <string>

namespace orbisk::PatternPrompt {

/// The translated texts of one prompt.
struct Texts {
    std::string title;
    std::string message;
    std::string confirmButton;
    std::string cancelButton;
};

/// "Select by Pattern" with its "Select" button, translated now.
[[nodiscard]] Texts select();
/// "Deselect by Pattern" with its "Deselect" button, translated now.
[[nodiscard]] Texts deselect();

} // namespace orbisk::PatternPrompt
