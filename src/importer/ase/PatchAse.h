// An ASE file without the objects at which the import library stops reading.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

struct PatchedAse {
  std::string text;
  std::size_t shapes = 0;  ///< objects of curves that were cut out
  std::size_t others = 0;  ///< blocks of kinds that nobody knows
};

/// `text`, an ASE file, without objects that are curves and blocks of unknown kinds: the library
/// gives up at the first of them and loses all that follows. Empty when there are none. Cost:
/// linear.
std::optional<PatchedAse> PatchAse(std::string_view text);

}  // namespace mapexport
