#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace refhost {

/// Sorts `items` by a key below `keys`, keeping the order of equal ones; returns where each key's items begin, and one past the
/// end.
template <class Item, class Key>
std::vector<std::uint32_t> GroupBy(std::size_t keys, const Key& key_of, std::vector<Item>& items) {
    std::vector<std::uint32_t> begin(keys + 2, 0);
    for (const Item& item : items) ++begin[key_of(item) + 2];
    for (std::size_t key = 2; key < begin.size(); ++key) begin[key] += begin[key - 1];
    std::vector<Item> grouped(items.size());
    for (const Item& item : items) grouped[begin[key_of(item) + 1]++] = item;
    items = std::move(grouped);
    begin.pop_back();
    return begin;
}

}  // namespace refhost
