#include "support/FormatSpecifier.h"

#include <string>

namespace orbisk {
namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Matches one specifier starting at text[start] == '%'; returns its length, or 0.
std::size_t match(std::string_view text, std::size_t start, FormatSpecifier& spec)
{
    std::size_t i = start + 1;
    const auto n = text.size();
    // Optional "\d+$" position.
    std::size_t j = i;
    while (j < n && isDigit(text[j]))
        ++j;
    if (j > i && j < n && text[j] == '$') {
        spec.position = std::stoi(std::string(text.substr(i, j - i)));
        i = j + 1;
    }
    while (i < n && (text[i] == '-' || text[i] == '+' || text[i] == ' ' || text[i] == '#' || text[i] == '0'))
        ++i;
    while (i < n && isDigit(text[i]))
        ++i;
    if (i + 1 < n && text[i] == '.' && isDigit(text[i + 1])) {
        ++i;
        while (i < n && isDigit(text[i]))
            ++i;
    }
    if (i + 1 < n && text.substr(i, 2) == "ll")
        i += 2;
    else if (i < n && std::string_view("lhqztj").find(text[i]) != std::string_view::npos)
        ++i;
    if (i < n && std::string_view("@dDiuUxXoOfeEgGcCsSpaA%").find(text[i]) != std::string_view::npos) {
        spec.conversion = text[i];
        return i + 1 - start;
    }
    return 0;
}

} // namespace

std::vector<FormatSpecifier> findFormatSpecifiers(std::string_view text)
{
    std::vector<FormatSpecifier> found;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%')
            continue;
        FormatSpecifier specifier;
        if (const auto length = match(text, i, specifier)) {
            specifier.offset = i;
            specifier.length = length;
            found.push_back(specifier);
            i += length - 1;
        }
    }
    return found;
}

} // namespace orbisk
