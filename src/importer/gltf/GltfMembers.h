// The kinds of members that glTF documents are made of. Only for the .cpp files that read them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "importer/gltf/GltfDocument.h"
#include "scene/JsonValue.h"

namespace mapexport {

/// Sizes, offsets and counts of bytes and elements: sums and products of two fit 64 bits.
inline constexpr std::int64_t kLargestGltfSize = std::int64_t{1} << 40;

inline int ReadGltfIndex(JsonValue& value) {
  return static_cast<int>(value.ReadInteger(0, std::numeric_limits<int>::max()));
}

inline auto IndexMember(const char* name, int& into) {
  return JsonMember{name, [&into](JsonValue& value) { into = ReadGltfIndex(value); }};
}

inline auto SizeMember(const char* name, std::size_t& into) {
  return JsonMember{name, [&into](JsonValue& value) {
                      into = static_cast<std::size_t>(value.ReadInteger(0, kLargestGltfSize));
                    }};
}

inline auto TextMember(const char* name, std::string& into) {
  return JsonMember{name, [&into](JsonValue& value) { into = value.ReadText(); }};
}

inline auto FloatMember(const char* name, float& into) {
  return JsonMember{name, [&into](JsonValue& value) { into = value.ReadFloat(); }};
}

inline auto BoolMember(const char* name, bool& into) {
  return JsonMember{name, [&into](JsonValue& value) { into = value.ReadBool(); }};
}

template <std::size_t size>
auto FloatsMember(const char* name, std::array<float, size>& into) {
  return JsonMember{
      name, [&into](JsonValue& value) {
        into = value.ReadTuple<float, size>([](JsonValue& element) { return element.ReadFloat(); });
      }};
}

/// An array; `read` gets each element's JsonValue& and what it is to be read into.
template <class Element, class Read>
auto ListMember(const char* name, std::vector<Element>& into, const Read& read) {
  return JsonMember{
      name, [&into, read](JsonValue& value) {
        value.ReadArray([&](JsonValue& element) { read(element, into.emplace_back()); });
      }};
}

inline auto IndexListMember(const char* name, std::vector<int>& into) {
  return ListMember(name, into, [](JsonValue& value, int& index) { index = ReadGltfIndex(value); });
}

/// An array of which only the length matters.
inline auto CountMember(const char* name, std::size_t& count) {
  return JsonMember{name, [&count](JsonValue& value) {
                      value.ReadArray([&](JsonValue& element) {
                        element.Skip();
                        ++count;
                      });
                    }};
}

/// The member `extensions` with those of the extensions that are read.
template <class... Reads>
auto ExtensionsMember(const JsonMember<Reads>&... extensions) {
  return JsonMember{"extensions", [=](JsonValue& value) { value.ReadObject(extensions...); }};
}

/// An object of indices: a primitive's attributes and the like.
void ReadGltfAttributes(JsonValue& value, GltfAttributes& into);

inline auto AttributesMember(const char* name, GltfAttributes& into) {
  return JsonMember{name, [&into](JsonValue& value) { ReadGltfAttributes(value, into); }};
}

void ReadGltfMaterial(JsonValue& value, GltfMaterial& material);
void ReadGltfNode(JsonValue& value, GltfNode& node);
void ReadGltfMesh(JsonValue& value, GltfMesh& mesh);
/// Properties that tools and people add; values of any kind.
void ReadGltfExtras(JsonValue& value, UserText& extras);

}  // namespace mapexport
