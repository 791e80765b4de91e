// The values of a glTF document's accessors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/Point3.h"
#include "importer/gltf/GltfBuffers.h"

namespace mapexport {

inline constexpr int kGltfByte = 5120;
inline constexpr int kGltfUnsignedByte = 5121;
inline constexpr int kGltfShort = 5122;
inline constexpr int kGltfUnsignedShort = 5123;
inline constexpr int kGltfUnsignedInt = 5125;
inline constexpr int kGltfFloat = 5126;

using GltfPoints = std::shared_ptr<const std::vector<Point3>>;

/// Reads accessors. Each one is held against the size of its buffer view, and against what the
/// reader of it can use. Normalised integers become floats from 0 or -1 to 1, other ones floats of
/// their value; floats may be of any value. Throws SceneError, with the place in the document, also
/// when a document names its data more often than its size makes likely.
class GltfAccessors {
 public:
  /// All must outlive this object; indices in `document` are in range.
  GltfAccessors(const std::string& path, const GltfDocument& document, GltfBuffers& buffers)
      : path_(path), document_(document), buffers_(buffers) {}

  /// Many primitives may share these: they are kept for a while.
  GltfPoints Points(int accessor);
  /// Texture coordinates, with v up.
  GltfPoints TexturePoints(int accessor);
  std::vector<std::array<float, 4>> Quadruples(int accessor);
  std::vector<std::array<float, 16>> Matrices(int accessor);
  std::vector<std::uint32_t> Indices(int accessor);
  std::vector<std::array<std::uint32_t, 4>> Joints(int accessor);

  std::string_view Bytes(int bufferView) { return buffers_.View(bufferView); }

  /// Counts the values of an accessor once more, for what is made of them each time.
  void CountUse(int accessor);

  /// Takes `bytes` for the elements of an accessor, which follow each other, in place of what its
  /// buffer view holds. `componentType` is theirs.
  void Replace(int accessor, int componentType, std::string bytes);

 private:
  struct Elements;
  struct Replacement {
    int componentType;
    std::string bytes;
  };

  Elements Find(int accessor, std::size_t components);
  const char* Range(int view, std::size_t offset, std::size_t count, std::size_t& stride,
                    std::size_t size, const std::string& place);
  template <class Make>
  GltfPoints Kept(int accessor, const Make& make);
  void CheckType(int accessor, std::string_view type) const;
  /// `Value` is made of `components` of Number.
  template <class Value, class Number, std::size_t components>
  std::vector<Value> Read(int accessor);
  template <class Value, class Number, std::size_t components>
  void ApplySparse(int accessor, std::vector<Value>& values);

  const std::string& path_;
  const GltfDocument& document_;
  GltfBuffers& buffers_;
  std::unordered_map<int, Replacement> replaced_;
  std::unordered_map<int, GltfPoints> points_;
  std::size_t kept_ = 0;  // values in these
  std::size_t read_ = 0;  // values over all
};

/// Calls `visit` with a value of the C++ type of components of that type; false for a type that
/// doesn't exist.
template <class Visit>
bool WithGltfComponent(int componentType, const Visit& visit) {
  switch (componentType) {
    case kGltfByte:
      visit(std::int8_t{});
      return true;
    case kGltfUnsignedByte:
      visit(std::uint8_t{});
      return true;
    case kGltfShort:
      visit(std::int16_t{});
      return true;
    case kGltfUnsignedShort:
      visit(std::uint16_t{});
      return true;
    case kGltfUnsignedInt:
      visit(std::uint32_t{});
      return true;
    case kGltfFloat:
      visit(float{});
      return true;
    default:
      return false;
  }
}

}  // namespace mapexport
