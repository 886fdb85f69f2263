// New names that do not collide: Keep Both, Rename Existing ("(old)") and Duplicate ("copy").
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orbisk::NameGenerator {

/// The longest name Linux file systems take (NAME_MAX). Every name made here fits: a stem too long
/// for its suffix is shortened by whole characters (a byte that is not UTF-8 counts as one), and
/// the extension is kept.
inline constexpr std::size_t maximumNameBytes = 255;

/// Whether a name is already taken where the new name is wanted.
using TakenTest = std::function<bool(const std::string& name)>;

struct SplitName {
    std::string stem;
    std::optional<std::string> extension; ///< without the dot
    bool operator==(const SplitName&) const = default;
};

/// A folder is all stem. A file splits at its last "." when both sides are non-empty and the stem
/// does not end with "." (so "archive.tar.gz" → "archive.tar" + "gz"; ".profile", "name." and
/// "a..b" stay whole). Works on bytes; names that are not UTF-8 split the same way.
[[nodiscard]] SplitName splitExtension(std::string_view name, bool isFolder);

/// The first free name of the form "stem N.ext", counting from 2, or from one past a trailing
/// " N" of one to six digits already on the stem ("report 2.txt" → "report 3.txt"). Never the
/// plain name itself.
[[nodiscard]] std::string keepBothName(std::string_view name, bool isFolder, const TakenTest& isTaken);

/// Like keepBothName, for a taken-test that can fail; its first failure is returned as it is.
template <class Error>
[[nodiscard]] std::expected<std::string, Error>
tryKeepBothName(std::string_view name, bool isFolder,
                const std::function<std::expected<bool, Error>(const std::string&)>& isTaken);

/// The name an existing item gets when it is kept aside: "stem (old).ext", then
/// "stem (old 2).ext", "stem (old 3).ext", … until one is free.
[[nodiscard]] std::string oldName(std::string_view name, bool isFolder, const TakenTest& isTaken);

/// The name of a duplicate: "stem copy.ext", then "stem copy 2.ext", … until one is free.
[[nodiscard]] std::string duplicateName(std::string_view name, bool isFolder, const TakenTest& isTaken);

/// A taken-test for folder: true when an entry of that name exists there, not following links
/// (a dangling link counts as taken).
[[nodiscard]] TakenTest existsChecker(const std::filesystem::path& folder);

namespace detail {
/// The stem without a trailing " N" (one to six ASCII digits) and the first number to try.
std::pair<std::string, long long> keepBothStart(const std::string& stem);
/// stem, suffix and ".extension", the stem shortened so that the whole fits maximumNameBytes.
std::string joined(std::string_view stem, std::string_view suffix, const std::optional<std::string>& extension);
} // namespace detail

template <class Error>
std::expected<std::string, Error>
tryKeepBothName(std::string_view name, bool isFolder,
                const std::function<std::expected<bool, Error>(const std::string&)>& isTaken)
{
    const auto split = splitExtension(name, isFolder);
    auto [stem, number] = detail::keepBothStart(split.stem);
    for (;; ++number) {
        auto candidate = detail::joined(stem, " " + std::to_string(number), split.extension);
        auto taken = isTaken(candidate);
        if (!taken)
            return std::unexpected(std::move(taken.error()));
        if (!*taken)
            return candidate;
    }
}

} // namespace orbisk::NameGenerator
