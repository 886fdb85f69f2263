// The rows a pane shows: positions into its folder's listing, with the ".." row on top.
#pragma once

#include "files/FileItem.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

namespace orbisk {

/// Reads like a vector of items, but holds four bytes per row: where the item stands in the
/// listing, which it keeps alive. Making rows in another order or through another filter never
/// copies an item. Immutable once made; a row reference lasts as long as this object.
class PaneRows {
public:
    using Listing = std::vector<FileItem>;

    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = FileItem;
        using difference_type = std::ptrdiff_t;
        using pointer = const FileItem*;
        using reference = const FileItem&;

        Iterator() = default;
        Iterator(const PaneRows* rows, std::size_t row) : rows_(rows), row_(row) {}
        reference operator*() const { return (*rows_)[row_]; }
        pointer operator->() const { return &(*rows_)[row_]; }
        Iterator& operator++()
        {
            ++row_;
            return *this;
        }
        Iterator operator++(int)
        {
            auto before = *this;
            ++row_;
            return before;
        }
        bool operator==(const Iterator& other) const { return row_ == other.row_; }

    private:
        const PaneRows* rows_ = nullptr;
        std::size_t row_ = 0;
    };

    /// No rows.
    PaneRows() = default;
    /// The items of listing at positions, in that order, after parentLink when there is one.
    /// Throws std::out_of_range for a position past the listing's end.
    PaneRows(std::shared_ptr<const Listing> listing, std::vector<std::uint32_t> positions,
             std::optional<FileItem> parentLink);

    [[nodiscard]] std::size_t size() const { return positions_.size() + (parent_ ? 1 : 0); }
    [[nodiscard]] bool empty() const { return size() == 0; }
    /// The item of row (row < size()); row 0 is ".." when there is one.
    [[nodiscard]] const FileItem& operator[](std::size_t row) const
    {
        if (parent_)
            return row == 0 ? *parent_ : (*listing_)[positions_[row - 1]];
        return (*listing_)[positions_[row]];
    }
    [[nodiscard]] const FileItem& front() const { return (*this)[0]; }
    [[nodiscard]] Iterator begin() const { return {this, 0}; }
    [[nodiscard]] Iterator end() const { return {this, size()}; }

private:
    std::shared_ptr<const Listing> listing_;
    std::vector<std::uint32_t> positions_;
    std::optional<FileItem> parent_;
};

} // namespace orbisk
