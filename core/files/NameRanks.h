// The collation order of every name of one listing, worked out once so that sorting it again is cheap.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "files/FileItem.h"

namespace orbisk {

/// The rank of each name of a listing in NameCollator's order, by the item's position in the
/// listing: a lower rank comes first, and two names share a rank exactly when their name keys are
/// equal (canonically equivalent names). Building it costs about one sort by name (the ICU sort
/// keys); what stays is four bytes per item, and FileSorter::order can then sort any part of the
/// listing, by any column, comparing integers instead of collation keys. Immutable once built;
/// may be shared between threads.
class NameRanks {
public:
    /// The ranks of the names of listing under locale (an ICU locale name, empty for the
    /// process's). Meant to run on the worker that read the folder.
    explicit NameRanks(const std::vector<FileItem>& listing, std::string_view locale = {});

    /// The rank of the name of listing[position].
    [[nodiscard]] std::uint32_t operator[](std::size_t position) const { return ranks_[position]; }

    /// How many items were ranked: the length of the listing.
    [[nodiscard]] std::size_t size() const { return ranks_.size(); }

    /// The locale the ranks were made under; sorts with them use it.
    [[nodiscard]] const std::string& locale() const { return locale_; }

private:
    std::string locale_;
    std::vector<std::uint32_t> ranks_;
};

} // namespace orbisk
