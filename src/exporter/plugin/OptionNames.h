// The names that the options dialog offers for coordinate systems and texture coordinates.
#pragma once

#include <array>

namespace mapexport {

/// A fixed table of names: an option holds the index of the chosen one.
struct OptionNames {
  int count;
  std::array<std::array<char, 100>, 4> names;
};

inline constexpr OptionNames kCoordinateSystemNames{4,
                                                    {{{"Left-handed ( talvern )"},
                                                      {"Right-handed"},
                                                      {"3D Studio Max"},
                                                      {"Inverse 3D Studio Max"}}}};

inline constexpr OptionNames kTextureCoordinateNames{
    4, {{{"Invert Y ( talvern )"}, {"Invert X"}, {"Invert X & Y"}, {"3D Studio Max"}}}};

}  // namespace mapexport
