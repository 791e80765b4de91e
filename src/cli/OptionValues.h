// Parses the values of options.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace mapexport {

/// Longest text that can be typed into a box of the dialog, in bytes.
inline constexpr std::size_t kMaxBoxText = 255;
/// Longest path that the file-open box can return, in bytes.
inline constexpr std::size_t kMaxPickedPath = 254;

/// The 32-bit float of a text that is wholly a decimal number ("-0.25", "+.5", "5.", "1e-3"), at
/// most kMaxBoxText long; nothing for any other text or when the float is not finite. A number too
/// small for a float is zero. The result does not depend on the locale.
std::optional<float> ParseFloat(std::string_view text);

/// A whole number from 0 to 4294967295 in decimal digits.
std::optional<std::uint32_t> ParseWhole(std::string_view text);

/// A row of a list box by its name or by its number, a single digit.
std::optional<int> ParseRow(std::span<const char* const> rows, std::string_view text);

}  // namespace mapexport
