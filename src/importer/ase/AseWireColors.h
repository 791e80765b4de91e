// The wire colours of the objects of an ASE file.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace mapexport {

/// Red, green and blue by the bytes of the object's name; of equal names the first one counts.
using WireColors = std::unordered_map<std::string, std::array<std::uint8_t, 3>>;

/// The wire colours in `text`, an ASE file, which the import library passes over. Cost: linear.
WireColors ReadAseWireColors(std::string_view text);

}  // namespace mapexport
