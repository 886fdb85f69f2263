// The order of names in a listing: locale collation with numbers by value, ignoring case.
#pragma once

#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// An ICU collator set up for file names: the given (or the process's) locale, numbers compared
/// by value ("file2" before "file10"), case ignored, accents not, canonically equivalent texts
/// equal. Names that collate equal but differ are then ordered by their code points after
/// canonical composition, so only canonically equivalent names tie. One object per thread.
class NameCollator {
public:
    /// locale: an ICU locale name ("sv", "de_DE"); empty for ICU's default, which follows LANG.
    /// The C/POSIX locale, whose collation is plain ASCII order, is read as the root locale.
    explicit NameCollator(std::string_view locale = {});

    /// Appends to out a byte string whose plain byte order (memcmp) is this collator's order of
    /// names, exact-text fallback included. Keys carry no zero byte but their own terminator.
    void appendNameKey(std::string_view name, std::string& out);

    /// Appends the collation part alone: texts that collate equal get equal keys.
    void appendCollationKey(std::string_view text, std::string& out);

    /// Compares two names the way their name keys compare: negative, zero or positive.
    [[nodiscard]] int compareNames(std::string_view a, std::string_view b);

private:
    std::unique_ptr<icu::Collator> collator_;
    std::vector<std::uint8_t> buffer_;
    icu::UnicodeString decoded_;
};

} // namespace orbisk
