// Numbers in the texts and in the bytes of scene files.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "system/ByteOrder.h"

namespace mapexport {

/// The 32-bit float nearest to `word`; empty when not all of it is a number. The locale doesn't
/// matter. A number that is too large gives infinity, one that is too small 0; "nan", "inf" and
/// forms like "-1.#IND", which some programs write, give values that aren't finite.
std::optional<float> DecimalNumber(std::string_view word);

/// The little-endian number at `at`; empty when it isn't completely within `bytes`.
template <class T>
std::optional<T> NumberAt(std::string_view bytes, std::size_t at) {
  if (bytes.size() < sizeof(T) || at > bytes.size() - sizeof(T)) return std::nullopt;
  return FileNumber<T>(bytes.data() + at);
}

}  // namespace mapexport
