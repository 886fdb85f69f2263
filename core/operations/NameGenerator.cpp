#include "operations/NameGenerator.h"

#include <sys/stat.h>

#include <algorithm>

#include "support/UnicodeText.h"

namespace orbisk::NameGenerator {

SplitName splitExtension(std::string_view name, bool isFolder)
{
    SplitName whole{std::string(name), std::nullopt};
    if (isFolder)
        return whole;
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return whole;
    const auto stem = name.substr(0, dot);
    if (stem.ends_with('.'))
        return whole;
    return {std::string(stem), std::string(name.substr(dot + 1))};
}

namespace detail {

std::pair<std::string, long long> keepBothStart(const std::string& stem)
{
    std::size_t digits = 0;
    while (digits < stem.size() && digits <= 6) {
        const char c = stem[stem.size() - 1 - digits];
        if (c < '0' || c > '9')
            break;
        ++digits;
    }
    const bool numbered = digits >= 1 && digits <= 6 && stem.size() > digits && stem[stem.size() - 1 - digits] == ' ';
    if (!numbered)
        return {stem, 2};
    const auto number = std::stoll(stem.substr(stem.size() - digits));
    return {stem.substr(0, stem.size() - digits - 1), number + 1};
}

std::string joined(std::string_view stem, std::string_view suffix, const std::optional<std::string>& extension)
{
    // The stem gives way so that the name still fits, cut by whole characters; an extension too
    // long to leave any of the stem is cut as part of the name instead.
    const std::size_t tail = suffix.size() + (extension ? extension->size() + 1 : 0);
    if (stem.size() + tail > maximumNameBytes && extension && tail >= maximumNameBytes) {
        const std::string whole = std::string(stem) + "." + *extension;
        return joined(whole, suffix, std::nullopt);
    }
    std::string result(
        stem.size() + tail > maximumNameBytes
            ? UnicodeText::prefixOfWholeCharacters(stem, maximumNameBytes - std::min(tail, maximumNameBytes))
            : stem);
    result += suffix;
    if (extension) {
        result += '.';
        result += *extension;
    }
    return result;
}

} // namespace detail

std::string keepBothName(std::string_view name, bool isFolder, const TakenTest& isTaken)
{
    const std::function<std::expected<bool, int>(const std::string&)> infallible =
        [&](const std::string& candidate) -> std::expected<bool, int> { return isTaken(candidate); };
    return *tryKeepBothName<int>(name, isFolder, infallible);
}

namespace {
/// The first free name among "stem<first>.ext", "stem<numbered 2>.ext", "stem<numbered 3>.ext", ….
template <class Numbered>
std::string firstFree(std::string_view name, bool isFolder, const TakenTest& isTaken, std::string_view first,
                      Numbered numbered)
{
    const auto split = splitExtension(name, isFolder);
    auto candidate = detail::joined(split.stem, first, split.extension);
    for (long long number = 2; isTaken(candidate); ++number)
        candidate = detail::joined(split.stem, numbered(number), split.extension);
    return candidate;
}
} // namespace

std::string oldName(std::string_view name, bool isFolder, const TakenTest& isTaken)
{
    return firstFree(name, isFolder, isTaken, " (old)", [](long long n) { return " (old " + std::to_string(n) + ")"; });
}

std::string duplicateName(std::string_view name, bool isFolder, const TakenTest& isTaken)
{
    return firstFree(name, isFolder, isTaken, " copy", [](long long n) { return " copy " + std::to_string(n); });
}

TakenTest existsChecker(const std::filesystem::path& folder)
{
    return [folder](const std::string& name) {
        struct stat st {};
        return ::lstat((folder / name).c_str(), &st) == 0;
    };
}

} // namespace orbisk::NameGenerator
