// The usual value at simdjson's speed, the unusual one with a second look.
#include "scene/JsonValue.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include <fmt/format.h>

#include "scene/JsonSyntax.h"
#include "system/IsFinite.h"
#include "system/PrintableText.h"
#include "system/Utf8.h"

namespace mapexport {

namespace {

// simdjson 3.0 loses digits behind "0." when there are more than a 64-bit integer holds, as in
// 0.30000000000000000001. A number of this many bytes is safe from that.
constexpr std::size_t kSafeNumber = 20;

// Columns of a value in a message.
constexpr std::size_t kShown = 40;

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
    Fail(fmt::format("{} is out of the range of 32-bit floats",
                     PrintableText(CheckNumber("a number"), kShown)));
  }
  return static_cast<float>(number);
}

std::int64_t JsonValue::ReadInteger(std::int64_t least, std::int64_t most) {
  std::int64_t number = 0;
  const simdjson::error_code error = value_.get_int64().get(number);
  if (error == simdjson::SUCCESS && number >= least && number <= most) return number;
  const std::string_view text = CheckNumber("an integer");
  if (text.find_first_of(".eE") != std::string_view::npos) {
    Fail(fmt::format("must be an integer without fraction and exponent, not {}",
                     PrintableText(text, kShown)));
  }
  Fail(fmt::format("{} is out of range ({} to {})", PrintableText(text, kShown), least, most));
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
  // It may have become the three bytes that would be its UTF-8.
  if (error != simdjson::SUCCESS || FindInvalidUtf8(text) != std::string_view::npos) {
    Fail("holds a lone surrogate");
  }
  if (text.find('\0') != std::string_view::npos) Fail("holds a NUL character");
  return std::string(text);
}

std::size_t JsonValue::ReadChoice(std::span<const std::string_view> choices) {
  const std::string text = ReadText();
  const auto choice = std::find(choices.begin(), choices.end(), text);
  if (choice == choices.end()) {
    Fail(fmt::format("\"{}\" is not known (known: \"{}\")", PrintableText(text, kShown),
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
