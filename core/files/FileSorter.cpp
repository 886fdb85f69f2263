#include "files/FileSorter.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <stdexcept>

#include "files/NameCollator.h"
#include "support/UnicodeText.h"

namespace orbisk::FileSorter {
namespace {

using Index = std::uint32_t;

/// The items being sorted: all of a vector, or those at some of its positions.
class Subset {
public:
    Subset(const std::vector<FileItem>& items, const std::vector<Index>* positions)
        : items_(items), positions_(positions)
    {
    }
    [[nodiscard]] std::size_t size() const { return positions_ ? positions_->size() : items_.size(); }
    [[nodiscard]] Index position(std::size_t k) const { return positions_ ? (*positions_)[k] : static_cast<Index>(k); }
    [[nodiscard]] const FileItem& operator[](std::size_t k) const { return items_[position(k)]; }

private:
    const std::vector<FileItem>& items_;
    const std::vector<Index>* positions_;
};

/// All name keys in one buffer, so that building them allocates a handful of times and comparing
/// two of them allocates never.
class NameKeys {
public:
    NameKeys(const Subset& items, NameCollator& collator) : starts_(items.size() + 1)
    {
        std::size_t totalNames = 0;
        for (std::size_t k = 0; k < items.size(); ++k)
            totalNames += items[k].name().size();
        bytes_.reserve(totalNames * 2 + items.size() * 8);
        for (std::size_t k = 0; k < items.size(); ++k) {
            collator.appendNameKey(items[k].name(), bytes_);
            starts_[k + 1] = bytes_.size();
        }
    }

    [[nodiscard]] int compare(Index a, Index b) const { return key(a).compare(key(b)); }

private:
    [[nodiscard]] std::string_view key(Index k) const
    {
        return {bytes_.data() + starts_[k], starts_[k + 1] - starts_[k]};
    }

    std::string bytes_;
    std::vector<std::size_t> starts_;
};

using CollatorSource = std::function<NameCollator&()>;

std::string asciiOrUnicodeLowercased(std::string_view text)
{
    bool ascii = true;
    std::string out(text);
    for (auto& c : out) {
        if (static_cast<unsigned char>(c) >= 0x80)
            ascii = false;
        else if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    if (ascii)
        return out;
    std::string lowered;
    UnicodeText::lowercased(UnicodeText::decode(text)).toUTF8String(lowered);
    return lowered;
}

/// The rank of each item's kind text: kinds that collate equal share a rank. describe is asked
/// once per distinct (flags, lowercased extension), never once per row.
std::vector<std::int64_t> kindRanks(const Subset& items, const KindDescriber& describe, const CollatorSource& collator)
{
    std::unordered_map<std::string, Index> textOfKey;
    std::vector<std::string> texts;
    std::vector<Index> textOfItem(items.size());
    std::string key;
    for (std::size_t k = 0; k < items.size(); ++k) {
        const auto& item = items[k];
        // One letter per flag instead of the words "true"/"false": the key then fits in the
        // string itself for most extensions, and building 200,000 of them allocates nothing.
        key.clear();
        for (const bool flag : {item.isDirectory, item.isPackage, item.isSymbolicLink, item.isParentLink})
            key.push_back(flag ? 't' : 'f');
        key.push_back('.');
        key.append(asciiOrUnicodeLowercased(item.typeExtension()));
        const auto [entry, added] = textOfKey.try_emplace(key, static_cast<Index>(texts.size()));
        if (added)
            texts.push_back(describe ? describe(item) : std::string());
        textOfItem[k] = entry->second;
    }

    std::vector<std::string> keys(texts.size());
    for (std::size_t t = 0; t < texts.size(); ++t)
        collator().appendCollationKey(texts[t], keys[t]);
    std::vector<Index> byKey(texts.size());
    std::iota(byKey.begin(), byKey.end(), Index{0});
    std::ranges::sort(byKey, [&](Index a, Index b) { return keys[a] < keys[b]; });
    std::vector<std::int64_t> rankOfText(texts.size());
    std::int64_t rank = 0;
    for (std::size_t k = 0; k < byKey.size(); ++k) {
        if (k > 0 && keys[byKey[k]] != keys[byKey[k - 1]])
            ++rank;
        rankOfText[byKey[k]] = rank;
    }

    std::vector<std::int64_t> ranks(items.size());
    for (std::size_t k = 0; k < items.size(); ++k)
        ranks[k] = rankOfText[textOfItem[k]];
    return ranks;
}

/// The primary value of each item for the size, date and kind columns, as one signed number.
std::vector<std::int64_t> primaryValues(const Subset& items, SortColumn column, const FolderSizes& folderSizes,
                                        const KindDescriber& describe, const CollatorSource& collator)
{
    std::vector<std::int64_t> values(items.size());
    switch (column) {
    case SortColumn::name: break;
    case SortColumn::size:
        for (std::size_t k = 0; k < items.size(); ++k) {
            const auto& item = items[k];
            values[k] = -1;
            if (item.size) {
                values[k] = *item.size;
            } else if (!folderSizes.empty()) {
                if (const auto found = folderSizes.find(std::string_view(item.urlBytes())); found != folderSizes.end())
                    values[k] = found->second;
            }
        }
        break;
    case SortColumn::date:
        for (std::size_t k = 0; k < items.size(); ++k)
            values[k] = items[k].modificationDate ? items[k].modificationDate->time_since_epoch().count()
                                                  : std::numeric_limits<std::int64_t>::min();
        break;
    case SortColumn::kind: values = kindRanks(items, describe, collator); break;
    }
    return values;
}

/// One item as the fast sort sees it: everything the comparison needs, side by side in memory.
struct RankedEntry {
    std::int64_t value;
    Index rank;
    Index k;
};

/// The order of items (as indices into items) when their names have ranks: a sort of small flat
/// records, with no look-up outside them while comparing.
std::vector<Index> orderByRank(const Subset& items, const SortSpec& spec, bool directoriesFirst,
                               const std::vector<std::int64_t>& values, const NameRanks& ranks)
{
    std::vector<RankedEntry> entries(items.size());
    for (std::size_t k = 0; k < items.size(); ++k)
        entries[k] = {values.empty() ? 0 : values[k], ranks[items.position(k)], static_cast<Index>(k)};
    auto rest = entries.begin();
    if (directoriesFirst)
        rest = std::partition(entries.begin(), entries.end(), [&](const auto& e) { return items[e.k].isDirectory; });
    const auto before = [](const RankedEntry& a, const RankedEntry& b) {
        return a.value != b.value ? a.value < b.value : a.rank < b.rank;
    };
    const auto sortRange = [&](auto first, auto last) {
        if (spec.ascending)
            std::sort(first, last, before);
        else
            std::sort(first, last, [&](const auto& a, const auto& b) { return before(b, a); });
    };
    sortRange(entries.begin(), rest);
    sortRange(rest, entries.end());
    std::vector<Index> order(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
        order[i] = entries[i].k;
    return order;
}

/// The order of items (as indices into items) with name keys built for this sort.
std::vector<Index> orderByKeys(const Subset& items, const SortSpec& spec, bool directoriesFirst,
                               const std::vector<std::int64_t>& values, NameCollator& collator)
{
    const NameKeys names(items, collator);
    std::vector<Index> order(items.size());
    std::iota(order.begin(), order.end(), Index{0});
    auto rest = order.begin();
    if (directoriesFirst)
        rest = std::partition(order.begin(), order.end(), [&](Index k) { return items[k].isDirectory; });

    const bool byName = values.empty();
    const auto compare = [&](Index a, Index b) {
        if (!byName && values[a] != values[b])
            return values[a] < values[b] ? -1 : 1;
        return names.compare(a, b);
    };
    const auto sortRange = [&](auto first, auto last) {
        if (spec.ascending)
            std::sort(first, last, [&](Index a, Index b) { return compare(a, b) < 0; });
        else
            std::sort(first, last, [&](Index a, Index b) { return compare(a, b) > 0; });
    };
    sortRange(order.begin(), rest);
    sortRange(rest, order.end());
    return order;
}

std::vector<Index> orderOf(const Subset& items, const SortSpec& spec, bool directoriesFirst,
                           const FolderSizes& folderSizes, const KindDescriber& describe, std::string_view locale,
                           const NameRanks* ranks)
{
    if (items.size() >= std::numeric_limits<Index>::max())
        throw std::length_error("too many items to sort");
    // A sort by name with ranks needs no collator at all.
    std::optional<NameCollator> madeCollator;
    const CollatorSource collator = [&]() -> NameCollator& {
        if (!madeCollator)
            madeCollator.emplace(locale);
        return *madeCollator;
    };
    const auto values = spec.column == SortColumn::name
                            ? std::vector<std::int64_t>()
                            : primaryValues(items, spec.column, folderSizes, describe, collator);
    if (ranks)
        return orderByRank(items, spec, directoriesFirst, values, *ranks);
    return orderByKeys(items, spec, directoriesFirst, values, collator());
}

/// Puts items[order[i]] at position i for every i, moving each item once, with no second array.
void permute(std::vector<FileItem>& items, std::vector<Index>& order)
{
    for (Index i = 0; i < order.size(); ++i) {
        if (order[i] == i)
            continue;
        FileItem first = std::move(items[i]);
        Index at = i;
        for (;;) {
            const Index from = order[at];
            order[at] = at;
            if (from == i) {
                items[at] = std::move(first);
                break;
            }
            items[at] = std::move(items[from]);
            at = from;
        }
    }
}

} // namespace

std::vector<FileItem> sorted(std::vector<FileItem> items, const SortSpec& spec, bool directoriesFirst,
                             const FolderSizes& folderSizes, const KindDescriber& describe, std::string_view locale)
{
    auto order = orderOf(Subset(items, nullptr), spec, directoriesFirst, folderSizes, describe, locale, nullptr);
    permute(items, order);
    return items;
}

std::vector<std::uint32_t> order(const std::vector<FileItem>& listing, const std::vector<std::uint32_t>& positions,
                                 const SortSpec& spec, bool directoriesFirst, const FolderSizes& folderSizes,
                                 const KindDescriber& describe, const NameRanks& ranks)
{
    if (ranks.size() != listing.size())
        throw std::invalid_argument("the ranks were made for another listing");
    const Subset items(listing, &positions);
    auto result = orderOf(items, spec, directoriesFirst, folderSizes, describe, ranks.locale(), &ranks);
    for (auto& k : result)
        k = positions[k];
    return result;
}

} // namespace orbisk::FileSorter
