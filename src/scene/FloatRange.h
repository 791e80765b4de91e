// Which doubles round to a float that is finite.
#pragma once

namespace mapexport {

/// The least double that rounds to infinity: halfway between the largest float and 2^128, the tie
/// going to the even one.
inline constexpr double kFloatOverflow = 0x1.ffffffp127;

}  // namespace mapexport
