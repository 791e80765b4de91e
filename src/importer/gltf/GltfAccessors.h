// The values of a glTF document's accessors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
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

/// The values of an accessor, which primitives may share.
template <class Value>
using GltfValues = std::shared_ptr<const std::vector<Value>>;
using GltfPoints = GltfValues<Point3>;

/// Reads accessors. Each one is held against the size of its buffer view, and against what the
/// reader of it can use. Normalised integers become floats from 0 or -1 to 1, other ones floats of
/// their value; floats may be of any value. What is read is taken from the budget. Throws
/// SceneError, with the place in the document.
class GltfAccessors {
 public:
  /// All must outlive this object; indices in `document` are in range.
  GltfAccessors(const std::string& path, const GltfDocument& document, GltfBuffers& buffers,
                GltfBudget& budget)
      : path_(path),
        document_(document),
        buffers_(buffers),
        budget_(budget),
        wasRead_(document.accessors.size()) {}

  GltfPoints Points(int accessor);
  /// Texture coordinates, with v up.
  GltfPoints TexturePoints(int accessor);
  GltfValues<std::array<float, 4>> Quadruples(int accessor);
  GltfValues<std::uint32_t> Indices(int accessor);
  GltfValues<std::array<std::uint32_t, 4>> Joints(int accessor);
  /// These are not kept.
  std::vector<std::array<float, 16>> Matrices(int accessor);

  /// Takes an attribute of a Draco mesh for the values of an accessor, or its indices, in place of
  /// what the buffer view holds. There must be as many. `mesh` must outlive this object.
  void TakeFromDraco(int accessor, const DracoMesh& mesh, int attribute);
  void TakeDracoIndices(int accessor, const DracoMesh& mesh) {
    TakeFromDraco(accessor, mesh, kNoGltfIndex);
  }

 private:
  struct Elements;
  struct DracoSource {
    const DracoMesh* mesh = nullptr;
    int attribute = kNoGltfIndex;  ///< none: the indices
    bool operator==(const DracoSource&) const = default;
  };
  template <class Value>
  using KeptValues = std::unordered_map<int, GltfValues<Value>>;

  Elements Find(int accessor, std::size_t components, std::string& decoded);
  const char* Range(int view, std::size_t offset, std::size_t count, std::size_t& stride,
                    std::size_t size, const std::string& place);
  template <class Value, class Number, std::size_t components>
  GltfValues<Value> Kept(int accessor, std::string_view type);
  void CheckType(int accessor, std::string_view type) const;
  /// `Value` is made of `components` of Number.
  template <class Value, class Number, std::size_t components>
  std::vector<Value> Read(int accessor);
  template <class Value, class Number, std::size_t components>
  void ApplySparse(int accessor, std::vector<Value>& values);

  const std::string& path_;
  const GltfDocument& document_;
  GltfBuffers& buffers_;
  GltfBudget& budget_;
  std::unordered_map<int, DracoSource> draco_;
  std::vector<bool> wasRead_;  // by the accessor
  std::tuple<KeptValues<Point3>, KeptValues<std::uint32_t>, KeptValues<std::array<float, 4>>,
             KeptValues<std::array<std::uint32_t, 4>>>
      kept_;
  std::size_t keptCount_ = 0;  // values in these
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
