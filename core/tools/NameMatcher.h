// The name test of a file search: everything, a wildcard list, or a name-contains text.
#pragma once

#include <unicode/unistr.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/WildcardPattern.h"

namespace orbisk {

/// Built once from what the user typed. An empty text matches every name; text with "*" or "?" is
/// a ";"-separated wildcard list matched ignoring case; any other text matches names that contain
/// it, ignoring case and diacritics ("resume" finds "Résumé.pages"). Names are raw bytes. Keeps
/// scratch buffers: one matcher per thread.
class NameMatcher {
public:
    explicit NameMatcher(std::string_view pattern);

    [[nodiscard]] bool matches(std::string_view name);
    [[nodiscard]] bool matchesEverything() const { return kind_ == Kind::everything; }

private:
    enum class Kind { everything, wildcard, contains };

    bool contains(std::string_view name);

    Kind kind_ = Kind::everything;
    std::optional<WildcardPattern> wildcard_;
    icu::UnicodeString folded_;        ///< the needle, folded for search
    std::optional<std::string> ascii_; ///< the folded needle when it is plain ASCII
    std::u16string prepared_;
    std::vector<std::uint32_t> bounds_;
    std::string lowered_;
};

} // namespace orbisk
