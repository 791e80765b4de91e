#include "importer/text/Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace mapexport {

std::optional<float> DecimalNumber(std::string_view word) {
  if (word.starts_with('+')) {
    word.remove_prefix(1);
    if (word.starts_with('-')) return std::nullopt;
  }
  const char* const end = word.data() + word.size();
  float value = 0;
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  if (word.empty()) return std::nullopt;
  if (stop != end || error == std::errc::invalid_argument) {
    if (word.find(".#") == std::string_view::npos) return std::nullopt;
    return std::numeric_limits<float>::quiet_NaN();
  }
  if (error == std::errc{}) return value;

  // Out of range; which end of it shows in the wider range, or else in the exponent's sign.
  double wide = 0;
  const auto [wideStop, wideError] = std::from_chars(word.data(), end, wide);
  const bool isLarge =
      wideError == std::errc{} && wideStop == end
          ? std::abs(wide) > 1.0
          : word.find("e-") == std::string_view::npos && word.find("E-") == std::string_view::npos;
  const float magnitude = isLarge ? std::numeric_limits<float>::infinity() : 0.0f;
  return word.starts_with('-') ? -magnitude : magnitude;
}

}  // namespace mapexport
