// Typed, checked reading of the values of a JsonDocument.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scene/JsonDocument.h"
#include "scene/JsonSyntax.h"

namespace mapexport {

/// A member that a format describes: its name, and what reads its value.
template <class Read>
struct JsonMember {
  std::string_view name;  ///< not empty; lives as long as the document
  Read read;              ///< called with the JsonValue&, which is never null
};
template <class Read>
JsonMember(const char*, Read) -> JsonMember<Read>;

/// One value and its place. Read it at most once, and before the next one.
class JsonValue {
 public:
  JsonValue(JsonDocument& document, simdjson::ondemand::value value, const JsonPlace& place)
      : document_(document), value_(value), place_(place) {}
  JsonValue(const JsonValue&) = delete;
  JsonValue& operator=(const JsonValue&) = delete;
  ~JsonValue() = default;

  JsonDocument& Document() const { return document_; }
  const JsonPlace& Place() const { return place_; }
  [[noreturn]] void Fail(std::string_view message) const { document_.Fail(place_, message); }

  /// A number, rounded to double and then to the nearest float, which must be finite. -0 is kept.
  float ReadFloat();
  /// A number, rounded to double; one too large for that is infinite.
  double ReadDouble();
  /// A number from `least` to `most` without fraction and exponent.
  std::int64_t ReadInteger(std::int64_t least, std::int64_t most);
  bool ReadBool();
  /// Text as UTF-8; NUL and lone surrogates are errors.
  std::string ReadText();
  /// The position in `choices` of a text that must be one of them.
  std::size_t ReadChoice(std::span<const std::string_view> choices);
  /// What kind of value it is, in the words of JsonKind; reads nothing.
  std::string_view Kind() { return JsonKind(*Start()); }
  /// Whether the value is null, which then is read.
  bool ReadNull();
  /// Checks the JSON of a value that is not needed.
  void Skip() { document_.Check(CheckJsonValue, Start()); }
  /// Throws that this array has `count` elements, but must have `wanted`.
  [[noreturn]] void FailSize(std::size_t count, std::string_view wanted) const;

  /// Reads a whole object; see JsonObject::ReadMember.
  template <class... Reads>
  void ReadObject(const JsonMember<Reads>&... members);
  /// Calls `read` with the JsonValue& of each element of an array.
  template <class Read>
  void ReadArray(const Read& read);
  /// The elements of an array, each made by `read`. Counts them first, which walks the text twice:
  /// not for arrays that nest. At most 64 MiB are reserved in advance, so that an array of many
  /// wrong elements costs little.
  template <class Element, class Read>
  std::vector<Element> ReadList(const Read& read);
  /// The same for the lists of meshes, which may have been parsed beforehand.
  template <class Element, class Read>
  std::vector<Element> ReadMeshList(const Read& read);
  /// An array of exactly `size` elements, each made by `read`.
  template <class Element, std::size_t size, class Read>
  std::array<Element, size> ReadTuple(const Read& read);

  /// For JsonObject and JsonArray.
  simdjson::ondemand::object StartObject();
  simdjson::ondemand::array StartArray();

 private:
  const char* Start() { return value_.raw_json_token().data(); }
  // The text of a value that must be a number, once it is checked.
  std::string_view CheckNumber(std::string_view wanted);
  [[noreturn]] void FailType(std::string_view wanted);

  JsonDocument& document_;
  simdjson::ondemand::value value_;
  JsonPlace place_;
};

/// An object while its members are read. Between two of them, nothing else may be read than what
/// the first one holds.
class JsonObject {
 public:
  /// The document's own members.
  explicit JsonObject(JsonDocument& document) : JsonObject(document, document.Start(), {}) {}
  /// The members of a value that must be an object.
  explicit JsonObject(JsonValue& value)
      : JsonObject(value.Document(), value.StartObject(), value.Place()) {}
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;
  ~JsonObject() = default;

  /// Reads the next member; false when there is none. It may be any of `members`, which are the
  /// same in each call; one that is none of them is ignored, one that is null counts as absent, and
  /// one that is given twice is an error.
  template <class... Reads>
  bool ReadMember(const JsonMember<Reads>&... members);
  /// Calls `read` with the name and the JsonValue& of the next member, whatever it is called; false
  /// when there is none. The name lives as long as the document; it is empty when it holds a lone
  /// surrogate.
  template <class Read>
  bool ReadAnyMember(const Read& read);
  /// Reads all members.
  template <class... Reads>
  void ReadMembers(const JsonMember<Reads>&... members) {
    while (ReadMember(members...)) {
    }
  }

 private:
  JsonObject(JsonDocument& document, simdjson::ondemand::object object, const JsonPlace& place)
      : document_(document), place_(place), next_(document.Get(object.begin())) {}
  bool GoToNext();
  template <class Read>
  bool ReadIfNamed(std::string_view name, simdjson::ondemand::value value,
                   const JsonMember<Read>& member, std::uint32_t bit);
  std::string_view NameOf(simdjson::ondemand::field& field) const;

  JsonDocument& document_;
  JsonPlace place_;
  simdjson::ondemand::object_iterator next_;
  bool atFirst_ = true;
  std::uint32_t seen_ = 0;  // one bit for each described member
};

/// An array while its elements are read. Between two of them, nothing else may be read than what
/// the first one holds.
class JsonArray {
 public:
  /// The elements of a value that must be an array.
  explicit JsonArray(JsonValue& value)
      : document_(value.Document()), place_(value.Place()), array_(value.StartArray()) {}
  JsonArray(const JsonArray&) = delete;
  JsonArray& operator=(const JsonArray&) = delete;
  ~JsonArray() = default;

  /// The number of elements, by going through all of them; only before the first one is read.
  std::size_t CountElements() { return document_.Get(array_.count_elements()); }

  /// Calls `read` with the next element; false when there is none.
  template <class Read>
  bool ReadElement(const Read& read);

 private:
  JsonDocument& document_;
  JsonPlace place_;
  simdjson::ondemand::array array_;
  simdjson::ondemand::array_iterator next_;
  std::size_t index_ = 0;
};

template <class... Reads>
bool JsonObject::ReadMember(const JsonMember<Reads>&... members) {
  static_assert(sizeof...(members) <= 32);
  if (!GoToNext()) return false;
  simdjson::ondemand::field field = document_.Get(*next_);
  const std::string_view name = NameOf(field);
  std::uint32_t bit = 1;
  const bool described =
      ((ReadIfNamed(name, field.value(), members, bit) || (bit <<= 1, false)) || ...);
  if (!described) document_.Check(CheckJsonValue, field.value().raw_json_token().data());
  return true;
}

template <class Read>
bool JsonObject::ReadAnyMember(const Read& read) {
  if (!GoToNext()) return false;
  simdjson::ondemand::field field = document_.Get(*next_);
  const std::string_view name = NameOf(field);
  JsonValue value(document_, field.value(), JsonPlace(place_, name));
  read(name, value);
  return true;
}

inline bool JsonObject::GoToNext() {
  if (!atFirst_) ++next_;
  atFirst_ = false;
  return !(next_ == simdjson::ondemand::object_iterator());  // any one stands for the end
}

template <class Read>
bool JsonObject::ReadIfNamed(std::string_view name, simdjson::ondemand::value value,
                             const JsonMember<Read>& member, std::uint32_t bit) {
  if (name != member.name) return false;
  JsonValue memberValue(document_, value, JsonPlace(place_, member.name));
  if ((seen_ & bit) != 0) memberValue.Fail("is given twice");
  seen_ |= bit;
  if (!memberValue.ReadNull()) member.read(memberValue);
  return true;
}

template <class Read>
bool JsonArray::ReadElement(const Read& read) {
  if (index_ == 0) {
    next_ = document_.Get(array_.begin());
  } else {
    ++next_;
  }
  if (next_ == simdjson::ondemand::array_iterator()) return false;  // any one stands for the end
  JsonValue element(document_, document_.Get(*next_), JsonPlace(place_, index_));
  ++index_;
  read(element);
  return true;
}

template <class... Reads>
void JsonValue::ReadObject(const JsonMember<Reads>&... members) {
  JsonObject(*this).ReadMembers(members...);
}

template <class Read>
void JsonValue::ReadArray(const Read& read) {
  JsonArray array(*this);
  while (array.ReadElement(read)) {
  }
}

template <class Element, class Read>
std::vector<Element> JsonValue::ReadList(const Read& read) {
  JsonArray array(*this);
  std::vector<Element> list;
  constexpr std::size_t kMostReserved = (std::size_t{64} << 20) / sizeof(Element);
  list.reserve(std::min(array.CountElements(), kMostReserved));
  while (array.ReadElement([&](JsonValue& element) { list.push_back(read(element)); })) {
  }
  return list;
}

template <class Element, class Read>
std::vector<Element> JsonValue::ReadMeshList(const Read& read) {
  std::vector<Element>* const parsed = document_.ParsedList<Element>(Start());
  return parsed == nullptr ? ReadList<Element>(read) : std::move(*parsed);
}

template <class Element, std::size_t size, class Read>
std::array<Element, size> JsonValue::ReadTuple(const Read& read) {
  std::array<Element, size> tuple{};
  std::size_t count = 0;
  ReadArray([&](JsonValue& element) {
    if (count < size) {
      tuple[count] = read(element);
    } else {
      element.Skip();
    }
    ++count;
  });
  if (count != size) FailSize(count, std::to_string(size));
  return tuple;
}

}  // namespace mapexport
