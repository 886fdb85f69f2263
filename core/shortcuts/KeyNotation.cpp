#include "shortcuts/KeyNotation.h"

#include <array>
#include <utility>
#include <vector>

namespace orbisk::KeyNotation {
namespace {

constexpr std::array modifiers = {std::string_view("Ctrl"), std::string_view("Alt"), std::string_view("Shift"),
                                  std::string_view("Meta")};

constexpr std::array<std::pair<std::string_view, std::string_view>, 7> shownKeys = {{
    {"Up", "↑"},
    {"Down", "↓"},
    {"Left", "←"},
    {"Right", "→"},
    {"Return", "Enter"},
    {"PgDown", "PgDn"},
    {"Del", "Delete"},
}};

// Splits "Ctrl+Shift+N" into its parts; a final "+" is the plus key itself ("Ctrl++").
std::vector<std::string_view> parts(std::string_view portable)
{
    std::vector<std::string_view> out;
    while (!portable.empty()) {
        const auto plus = portable.find('+', 1);
        if (plus == std::string_view::npos) {
            out.push_back(portable);
            break;
        }
        out.push_back(portable.substr(0, plus));
        portable.remove_prefix(plus + 1);
    }
    return out;
}

} // namespace

std::string displayed(std::string_view portable)
{
    std::string out;
    for (const auto part : parts(portable)) {
        if (!out.empty())
            out += '+';
        std::string_view shown = part;
        for (const auto& [name, glyph] : shownKeys) {
            if (part == name)
                shown = glyph;
        }
        out += shown;
    }
    return out;
}

bool isCanonical(std::string_view portable)
{
    const auto all = parts(portable);
    if (all.empty())
        return false;
    std::size_t next = 0; // the first modifier still allowed
    for (std::size_t i = 0; i + 1 < all.size(); ++i) {
        std::size_t found = next;
        while (found < modifiers.size() && modifiers[found] != all[i])
            ++found;
        if (found == modifiers.size())
            return false;
        next = found + 1;
    }
    const auto key = all.back();
    for (const auto modifier : modifiers) {
        if (key == modifier)
            return false;
    }
    return !key.empty();
}

} // namespace orbisk::KeyNotation
