#include "exporter/base/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>

namespace mapexport {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

const char* SkipBlanks(const char* text) {
  return text + std::strspn(text, " \t\n\v\f\r");
}

/// The number at the start of a text that begins with a digit or with a point and a digit.
double Decimal(const char* text);

#ifndef _LIBCPP_VERSION
/// The value of a number that neither double nor long double can hold: 0 when its exponent is
/// negative, else infinity.
double OutOfRange(const char* digits, const char* end) {
  for (const char* c = digits; c != end; ++c) {
    if ((*c == 'e' || *c == 'E') && c[1] == '-') return 0.0;
  }
  return std::numeric_limits<double>::infinity();
}

double Decimal(const char* text) {
  const char* end = text + std::strlen(text);
  double value = 0.0;
  const auto result = std::from_chars(text, end, value);
  if (result.ec != std::errc::result_out_of_range) return value;
  long double wide = 0.0L;
  const auto wideResult = std::from_chars(text, end, wide);
  return wideResult.ec == std::errc::result_out_of_range ? OutOfRange(text, wideResult.ptr)
                                                         : static_cast<double>(wide);
}
#else
// libc++ 19 has no std::from_chars for floating-point numbers. Its streams store the nearest number
// also when they report that one is out of range.
double Decimal(const char* text) {
  constexpr const char* kDigits = "0123456789";
  const char* end = text + std::strspn(text, kDigits);
  if (*end == '.') end += 1 + std::strspn(end + 1, kDigits);
  if (*end == 'e' || *end == 'E') {
    const char* exponent = end + 1 + (end[1] == '+' || end[1] == '-' ? 1 : 0);
    if (IsDigit(*exponent)) end = exponent + std::strspn(exponent, kDigits);
  }
  std::istringstream stream(std::string(text, end));
  stream.imbue(std::locale::classic());
  double value = 0.0;
  stream >> value;
  return value;
}
#endif

double UnsignedNumber(const char* text) {
  if (std::strcmp(text, "inf") == 0) return std::numeric_limits<double>::infinity();
  if (std::strcmp(text, "nan") == 0) return std::numeric_limits<double>::quiet_NaN();
  const bool isNumber = IsDigit(text[0]) || (text[0] == '.' && IsDigit(text[1]));
  return isNumber ? Decimal(text) : 0.0;
}

}  // namespace

std::string FormatFloat(float value) {
  std::array<char, 64> buffer;  // the longest float has 39 digits before the point
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(),
                                    static_cast<double>(value), std::chars_format::fixed, 6);
  return {buffer.data(), result.ptr};
}

double LeadingNumber(const char* text) {
  text = SkipBlanks(text);
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  const double value = UnsignedNumber(text);
  return negative ? -value : value;
}

int LeadingInteger(const char* text) {
  text = SkipBlanks(text);
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<int>::max()} + 1;
  std::int64_t value = 0;
  for (; IsDigit(*text); ++text) value = std::min<std::int64_t>(value * 10 + (*text - '0'), kLimit);
  if (negative) return static_cast<int>(-value);
  return static_cast<int>(std::min(value, kLimit - 1));
}

}  // namespace mapexport
