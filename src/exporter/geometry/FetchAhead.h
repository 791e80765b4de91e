// Fetching what a walk over a list in some other order comes to next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mapexport {

/// Asks for the item that `order` names a few places after `i`, while that of `i` is looked at. The
/// processor fetches what follows by itself only where a list is read from one end to the other.
template <typename List>
void FetchAhead(const List& items, std::span<const std::uint32_t> order, std::size_t i) {
  constexpr std::size_t kAhead = 12;
  if (i + kAhead < order.size()) __builtin_prefetch(items.data() + order[i + kAhead]);
}

}  // namespace mapexport
