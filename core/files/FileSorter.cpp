#include "files/FileSorter.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "files/NameCollator.h"
#include "support/UnicodeText.h"

namespace orbisk::FileSorter {
namespace {

using Index = std::uint32_t;

/// All name keys in one buffer, so that building them allocates a handful of times and comparing
/// two of them allocates never.
class NameKeys {
public:
    NameKeys(const std::vector<FileItem>& items, NameCollator& collator) : starts_(items.size() + 1)
    {
        std::size_t totalNames = 0;
        for (const auto& item : items)
            totalNames += item.name().size();
        bytes_.reserve(totalNames * 2 + items.size() * 8);
        for (std::size_t i = 0; i < items.size(); ++i) {
            collator.appendNameKey(items[i].name(), bytes_);
            starts_[i + 1] = bytes_.size();
        }
    }

    [[nodiscard]] int compare(Index a, Index b) const { return key(a).compare(key(b)); }

private:
    [[nodiscard]] std::string_view key(Index i) const
    {
        return {bytes_.data() + starts_[i], starts_[i + 1] - starts_[i]};
    }

    std::string bytes_;
    std::vector<std::size_t> starts_;
};

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
std::vector<std::int64_t> kindRanks(const std::vector<FileItem>& items, const KindDescriber& describe,
                                    NameCollator& collator)
{
    std::unordered_map<std::string, Index> textOfKey;
    std::vector<std::string> texts;
    std::vector<Index> textOfItem(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto& item = items[i];
        std::string key;
        for (const bool flag : {item.isDirectory, item.isPackage, item.isSymbolicLink, item.isParentLink})
            key.append(flag ? "true" : "false");
        key.push_back('.');
        key.append(asciiOrUnicodeLowercased(item.typeExtension()));
        const auto [entry, added] = textOfKey.try_emplace(std::move(key), static_cast<Index>(texts.size()));
        if (added)
            texts.push_back(describe ? describe(item) : std::string());
        textOfItem[i] = entry->second;
    }

    std::vector<std::string> keys(texts.size());
    for (std::size_t t = 0; t < texts.size(); ++t)
        collator.appendCollationKey(texts[t], keys[t]);
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
    for (std::size_t i = 0; i < items.size(); ++i)
        ranks[i] = rankOfText[textOfItem[i]];
    return ranks;
}

/// The primary value of each item for the size, date and kind columns, as one signed number.
std::vector<std::int64_t> primaryValues(const std::vector<FileItem>& items, SortColumn column,
                                        const FolderSizes& folderSizes, const KindDescriber& describe,
                                        NameCollator& collator)
{
    std::vector<std::int64_t> values(items.size());
    switch (column) {
    case SortColumn::name: break;
    case SortColumn::size:
        for (std::size_t i = 0; i < items.size(); ++i) {
            const auto& item = items[i];
            values[i] = -1;
            if (item.size) {
                values[i] = *item.size;
            } else if (!folderSizes.empty()) {
                if (const auto found = folderSizes.find(std::string_view(item.urlBytes())); found != folderSizes.end())
                    values[i] = found->second;
            }
        }
        break;
    case SortColumn::date:
        for (std::size_t i = 0; i < items.size(); ++i)
            values[i] = items[i].modificationDate ? items[i].modificationDate->time_since_epoch().count()
                                                  : std::numeric_limits<std::int64_t>::min();
        break;
    case SortColumn::kind: values = kindRanks(items, describe, collator); break;
    }
    return values;
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
    if (items.size() >= std::numeric_limits<Index>::max())
        throw std::length_error("too many items to sort");
    NameCollator collator(locale);
    const NameKeys names(items, collator);
    const auto values = primaryValues(items, spec.column, folderSizes, describe, collator);

    std::vector<Index> order(items.size());
    std::iota(order.begin(), order.end(), Index{0});
    auto rest = order.begin();
    if (directoriesFirst)
        rest = std::partition(order.begin(), order.end(), [&](Index i) { return items[i].isDirectory; });

    const bool byName = spec.column == SortColumn::name;
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
    permute(items, order);
    return items;
}

} // namespace orbisk::FileSorter
