// The usual value at simdjson's speed, the unusual one with a second look.
#include "scene/JsonValue.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include <fmt/format.h>

#include "scene/FloatRange.h"
#include "scene/JsonKind.h"

namespace mapexport {

namespace {

// simdjson 3.0 loses digits behind "0." when there are more than a 64-bit integer holds, as in
// 0.30000000000000000001. A number of this many bytes is safe from that.
constexpr std::size_t kSafeNumber = 20;

// Whether a sound number that no double comes near to is too small rather than too large.
bool IsTiny(std::string_view number) {
  const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, mantissaEnd);
  const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  const auto first = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
  std::string_view digits = number.substr(std::min(mantissaEnd + 1, number.size()));
  if (digits.starts_with('+')) digits.remove_prefix(1);
  std::int32_t exponent = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
  if (result.ec == std::errc::result_out_of_range) return digits.starts_with('-');
  return point - first + exponent < 0;
}

// The double nearest to a sound number, infinity when it is too large for one.
double ToDouble(std::string_view number) {
  double nearest = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), nearest);
  if (result.ec == std::errc()) return nearest;
  nearest = IsTiny(number) ? 0.0 : std::numeric_limits<double>::infinity();
  return number.starts_with('-') ? -nearest : nearest;
}

// `text` for a message: short, and without control characters.
std::string Shown(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::size_t length = std::min(text.size(), kLongest);
  // Cut no character in two.
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
    --length;
  }
  std::string shown(text.substr(0, length));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || c == '\x7F') c = '?';
  }
  return length < text.size() ? shown + "..." : shown;
}

// simdjson may turn an escaped lone surrogate into the three bytes that would be its UTF-8; the
// bytes of a document never hold those.
bool HasSurrogate(std::string_view text) {
  for (std::size_t i = text.find('\xED'); i != std::string_view::npos;
       i = text.find('\xED', i + 1)) {
    if (i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0xA0) return true;
  }
  return false;
}

}  // namespace

simdjson::ondemand::object JsonValue::StartObject() {
  const auto result = value_.get_object();
  if (result.error() == simdjson::INCORRECT_TYPE) FailType("an object");
  return document_.Get(result);
}

simdjson::ondemand::array JsonValue::StartArray() {
  const auto result = value_.get_array();
  if (result.error() == simdjson::INCORRECT_TYPE) FailType("an array");
  return document_.Get(result);
}

double JsonValue::ReadDouble() {
  double number = 0;
  if (value_.raw_json_token().size() > kSafeNumber ||
      value_.get_double().get(number) != simdjson::SUCCESS) {
    number = ToDouble(CheckNumber("a number"));
  }
  return number;
}

float JsonValue::ReadFloat() {
  const double number = ReadDouble();
  if (!(std::abs(number) < kFloatOverflow)) {
    Fail(fmt::format("{} is out of the range of 32-bit floats", Shown(CheckNumber("a number"))));
  }
  return static_cast<float>(number);
}

std::int64_t JsonValue::ReadInteger(std::int64_t least, std::int64_t most) {
  std::int64_t number = 0;
  const simdjson::error_code error = value_.get_int64().get(number);
  if (error == simdjson::SUCCESS && number >= least && number <= most) return number;
  const std::string_view text = CheckNumber("an integer");
  if (text.find_first_of(".eE") != std::string_view::npos) {
    Fail(fmt::format("must be an integer without fraction and exponent, not {}", Shown(text)));
  }
  Fail(fmt::format("{} is out of range ({} to {})", Shown(text), least, most));
}

bool JsonValue::ReadBool() {
  bool result = false;
  if (value_.get_bool().get(result) != simdjson::SUCCESS) FailType("a bool");
  return result;
}

std::string JsonValue::ReadText() {
  if (*Start() != '"') FailType("text");
  std::string_view text;
  const simdjson::error_code error = value_.get_string().get(text);
  // With sound syntax, a lone surrogate is all that is left to be wrong.
  if (error != simdjson::SUCCESS) document_.Check(CheckJsonValue, Start());
  if (error != simdjson::SUCCESS || HasSurrogate(text)) Fail("holds a lone surrogate");
  if (text.find('\0') != std::string_view::npos) Fail("holds a NUL character");
  return std::string(text);
}

std::size_t JsonValue::ReadChoice(std::span<const std::string_view> choices) {
  const std::string text = ReadText();
  const auto choice = std::find(choices.begin(), choices.end(), text);
  if (choice == choices.end()) {
    Fail(fmt::format("\"{}\" is not known (known: \"{}\")", Shown(text),
                     fmt::join(choices, "\", \"")));
  }
  return static_cast<std::size_t>(choice - choices.begin());
}

bool JsonValue::ReadNull() {
  return document_.Get(value_.is_null());
}

void JsonValue::FailSize(std::size_t count, std::string_view wanted) const {
  Fail(fmt::format("has {} element{}, must have {}", count, count == 1 ? "" : "s", wanted));
}

std::string_view JsonValue::CheckNumber(std::string_view wanted) {
  const std::string_view text = document_.Check(CheckJsonValue, Start());
  if (JsonKind(text.front()) != "a number") FailType(wanted);
  return text;
}

void JsonValue::FailType(std::string_view wanted) {
  const std::string_view text = document_.Check(CheckJsonValue, Start());
  Fail(fmt::format("must be {}, not {}", wanted, JsonKind(text.front())));
}

std::string_view JsonObject::NameOf(simdjson::ondemand::field& field) const {
  const char* quote = field.key().raw() - 1;
  std::string_view name;
  if (field.unescaped_key().get(name) == simdjson::SUCCESS) return name;
  // With sound syntax it holds a lone surrogate: no described member's name, as good as none.
  document_.Check(CheckJsonName, quote);
  return {};
}

}  // namespace mapexport
