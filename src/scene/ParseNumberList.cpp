// A cursor that gives up at the first surprise. No zero byte is ever passed, so that the text's
// last one ends everything.
#include "scene/ParseNumberList.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <system_error>

#include "system/Ascii.h"
#include "system/IsFinite.h"

namespace mapexport {

namespace {

constexpr std::uint32_t kAnyUint32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kAnyUint16 = std::numeric_limits<std::uint16_t>::max();

// Integers and powers of ten up to these are exact as doubles, so that one division, which is
// rounded once, gives the nearest double.
constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
constexpr std::array<double, 23> kPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
// So many digits can't overflow 64 bits.
constexpr std::ptrdiff_t kMostDigits = 19;

class Cursor {
 public:
  explicit Cursor(const char* text) : at_(text) {}

  const char* At() const { return at_; }

  /// Passes `c` and blanks before it; false when there is something else.
  bool Take(char c) {
    SkipSpace();
    if (*at_ != c) return false;
    ++at_;
    return true;
  }

  bool ReadInteger(std::uint32_t most, std::uint32_t& integer) {
    SkipSpace();
    std::uint64_t value = 0;
    const char* const start = at_;
    const char* const end = PassDigits(start, value);
    if (end == nullptr || end - start > kMostDigits || value > most) return false;
    at_ = end;
    integer = static_cast<std::uint32_t>(value);
    return true;
  }

  bool ReadFloat(float& number) {
    SkipSpace();
    const char* const start = at_;
    const bool negative = *at_ == '-';
    std::uint64_t digits = 0;
    const char* end = PassDigits(at_ + (negative ? 1 : 0), digits);
    if (end == nullptr) return false;
    std::ptrdiff_t decimals = 0;
    if (*end == '.') {
      const char* const first = end + 1;
      for (end = first; IsDigit(*end); ++end) digits = digits * 10 + DigitOf(*end);
      decimals = end - first;
      if (decimals == 0) return false;
    }
    double value = 0;
    if (*end == 'e' || *end == 'E' || end - start > kMostDigits || digits > kLargestExact) {
      end = PassExponent(end);
      // What is too large or too small for a double fails here.
      if (end == nullptr || std::from_chars(start, end, value).ec != std::errc()) return false;
    } else {
      value = static_cast<double>(digits) / kPowersOfTen[static_cast<std::size_t>(decimals)];
      if (negative) value = -value;
    }
    if (!(std::abs(value) < kFloatOverflow)) return false;
    at_ = end;
    number = static_cast<float>(value);
    return true;
  }

 private:
  static std::uint64_t DigitOf(char c) { return static_cast<std::uint64_t>(c - '0'); }

  void SkipSpace() {
    while (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t') ++at_;
  }

  // Past the digits in front of a point, null where there are none or needless zeros.
  static const char* PassDigits(const char* at, std::uint64_t& value) {
    const char* const start = at;
    for (; IsDigit(*at); ++at) value = value * 10 + DigitOf(*at);
    return at == start || (*start == '0' && at - start > 1) ? nullptr : at;
  }

  // Past the exponent, if there is one; null where it has no digits.
  static const char* PassExponent(const char* at) {
    if (*at != 'e' && *at != 'E') return at;
    ++at;
    if (*at == '+' || *at == '-') ++at;
    if (!IsDigit(*at)) return nullptr;
    while (IsDigit(*at)) ++at;
    return at;
  }

  const char* at_;
};

bool ReadIndices(Cursor& cursor, std::array<std::uint32_t, 3>& indices) {
  return cursor.ReadInteger(kAnyUint32, indices[0]) && cursor.Take(',') &&
         cursor.ReadInteger(kAnyUint32, indices[1]) && cursor.Take(',') &&
         cursor.ReadInteger(kAnyUint32, indices[2]);
}

bool ReadTuple(Cursor& cursor, Point3& point) {
  return cursor.ReadFloat(point.x) && cursor.Take(',') && cursor.ReadFloat(point.y) &&
         cursor.Take(',') && cursor.ReadFloat(point.z);
}

bool ReadTuple(Cursor& cursor, TVFace& face) {
  return ReadIndices(cursor, face.t);
}

bool ReadTuple(Cursor& cursor, Face& face) {
  if (!ReadIndices(cursor, face.v)) return false;
  if (!cursor.Take(',')) return true;
  if (!cursor.ReadInteger(kAnyUint32, face.smGroup)) return false;
  if (!cursor.Take(',')) return true;
  std::uint32_t material = 0;
  if (!cursor.ReadInteger(kAnyUint16, material)) return false;
  face.SetMatID(static_cast<std::uint16_t>(material));
  return true;
}

template <class Element>
const char* Parse(const char* text, std::vector<Element>& list) {
  Cursor cursor(text);
  if (!cursor.Take('[')) return nullptr;
  do {
    Element element;
    if (!cursor.Take('[') || !ReadTuple(cursor, element) || !cursor.Take(']')) return nullptr;
    list.push_back(element);
  } while (cursor.Take(','));
  return cursor.Take(']') ? cursor.At() : nullptr;
}

}  // namespace

const char* ParseNumberList(const char* text, std::vector<Point3>& list) {
  return Parse(text, list);
}

const char* ParseNumberList(const char* text, std::vector<Face>& list) {
  return Parse(text, list);
}

const char* ParseNumberList(const char* text, std::vector<TVFace>& list) {
  return Parse(text, list);
}

}  // namespace mapexport
