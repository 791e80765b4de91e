// An array that extends itself when it is written past its end.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace mapexport {

/// A growable array with a capacity that is always grown by whole steps of `kStep` entries, many
/// steps at a time for large arrays, so that appending stays constant time.
template <typename T, std::size_t kStep = 1>
class GrowableArray {
 public:
  std::size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  std::size_t capacity() const { return items_.capacity(); }
  T* data() { return items_.data(); }
  const T* data() const { return items_.data(); }
  T* begin() { return items_.data(); }
  T* end() { return items_.data() + items_.size(); }
  const T* begin() const { return items_.data(); }
  const T* end() const { return items_.data() + items_.size(); }

  T& operator[](std::size_t i) {
    assert(i < items_.size());
    return items_[i];
  }
  const T& operator[](std::size_t i) const {
    assert(i < items_.size());
    return items_[i];
  }

  /// Entry `i` for writing. An index past the count extends the count to i + 1 with default
  /// entries.
  T& At(std::size_t i) {
    Extend(i + 1);
    return items_[i];
  }

  /// Extends the count to `count` with default entries unless it is as large already.
  void Extend(std::size_t count) {
    if (count <= items_.size()) return;
    Reserve(count);
    items_.resize(count);
  }

  void Append(T item) {
    if (items_.size() == items_.capacity()) Grow(items_.size() + 1);
    items_.push_back(std::move(item));
  }

  /// Removes entry `i`; later entries move down.
  void Remove(std::size_t i) {
    assert(i < items_.size());
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(i));
  }

  /// Drops every entry from `count` on; `count` is at most the count.
  void Shrink(std::size_t count) {
    assert(count <= items_.size());
    items_.resize(count);
  }

  /// Makes room for `count` entries at least. A large array takes address space far ahead.
  void Reserve(std::size_t count) {
    if (count > items_.capacity()) Grow(count);
  }

  void Clear() { items_.clear(); }

 private:
  void Grow(std::size_t count) {
    const std::size_t capacity = items_.capacity();
    // Larger arrays reserve far ahead, to be copied seldom; unused memory is never touched.
    constexpr std::size_t kLarge = (std::size_t{128} << 10) / sizeof(T);
    constexpr std::size_t kLeast = (std::size_t{64} << 20) / sizeof(T);
    if (capacity >= kLarge) {
      try {
        ReserveAhead(count, std::max(3 * capacity, kLeast));
        return;
      } catch (const std::bad_alloc&) {
        // Less address space may still be available.
      }
    }
    ReserveAhead(count, capacity);
  }

  /// Makes room for `count` entries, and at least for `ahead` more than there are.
  void ReserveAhead(std::size_t count, std::size_t ahead) {
    const std::size_t capacity = items_.capacity();
    const std::size_t missing = std::max(count - capacity, ahead);
    items_.reserve(capacity + (missing + kStep - 1) / kStep * kStep);
  }

  std::vector<T> items_;
};

/// For a loop over `order` that reads items[order[i]]: fetches an item that it will read soon. The
/// processor does so by itself only where a list is read from one end to the other.
template <typename List>
void FetchAhead(const List& items, std::span<const std::uint32_t> order, std::size_t i) {
  constexpr std::size_t kAhead = 12;
  if (i + kAhead < order.size()) __builtin_prefetch(items.data() + order[i + kAhead]);
}

}  // namespace mapexport
