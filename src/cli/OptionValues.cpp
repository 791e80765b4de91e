#include "cli/OptionValues.h"

#include <algorithm>
#include <charconv>

#include "system/Ascii.h"
#include "system/IsFinite.h"

namespace mapexport {
std::optional<float> ParseFloat(std::string_view text) {
  if (text.size() > kMaxBoxText) return std::nullopt;
  std::string_view number = text;
  if (!number.empty() && (number.front() == '+' || number.front() == '-')) number.remove_prefix(1);
  // A second sign, "inf" and "nan" are refused here; from_chars would accept them.
  if (number.empty() || !(IsDigit(number.front()) || number.front() == '.')) {
    return std::nullopt;
  }

  double value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
  // A number beyond a double in a text this short is huge or tiny by the sign of its exponent.
  if (error == std::errc::result_out_of_range) {
    if (number.find("e-") == number.npos && number.find("E-") == number.npos) return std::nullopt;
    value = 0;
  }
  if (value >= kFloatOverflow) return std::nullopt;
  return static_cast<float>(text.front() == '-' ? -value : value);
}

std::optional<std::uint32_t> ParseWhole(std::string_view text) {
  std::uint32_t seed = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seed);
  if (stop != end || error != std::errc()) return std::nullopt;
  return seed;
}

std::optional<int> ParseRow(std::span<const char* const> rows, std::string_view text) {
  if (text.size() == 1 && IsDigit(text[0]) && text[0] - '0' < static_cast<int>(rows.size())) {
    return text[0] - '0';
  }
  const auto found = std::ranges::find(rows, text);
  if (found == rows.end()) return std::nullopt;
  return static_cast<int>(found - rows.begin());
}

}  // namespace mapexport
