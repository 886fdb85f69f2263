#include "files/NameRanks.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "files/NameCollator.h"

namespace orbisk {

NameRanks::NameRanks(const std::vector<FileItem>& listing, std::string_view locale) : locale_(locale)
{
    if (listing.size() >= std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("too many names to rank");
    std::size_t totalNames = 0;
    for (const auto& item : listing)
        totalNames += item.name().size();

    // The keys are needed only to find the order; what stays is one integer per item.
    NameCollator collator(locale);
    std::string keys;
    keys.reserve(totalNames * 2 + listing.size() * 8);
    std::vector<std::size_t> ends;
    ends.reserve(listing.size());
    for (const auto& item : listing) {
        collator.appendNameKey(item.name(), keys);
        ends.push_back(keys.size());
    }
    const auto key = [&](std::uint32_t position) {
        const std::size_t start = position == 0 ? 0 : ends[position - 1];
        return std::string_view(keys).substr(start, ends[position] - start);
    };
    std::vector<std::uint32_t> byKey(listing.size());
    std::iota(byKey.begin(), byKey.end(), std::uint32_t{0});
    std::ranges::sort(byKey, [&](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
    ranks_.resize(listing.size());
    std::uint32_t rank = 0;
    for (std::size_t k = 0; k < byKey.size(); ++k) {
        if (k > 0 && key(byKey[k]) != key(byKey[k - 1]))
            ++rank;
        ranks_[byKey[k]] = rank;
    }
}

} // namespace orbisk
