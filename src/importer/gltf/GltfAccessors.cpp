// The values of a glTF document's accessors.
#include "importer/gltf/GltfAccessors.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include <fmt/format.h>

#include "importer/SourceFile.h"
#include "importer/text/HostText.h"

namespace mapexport {
namespace {

/// Values that any document may have without data for them.
constexpr std::size_t kFreeZeros = std::size_t{1} << 16;
/// Values that any document may have read or kept, and how many for each byte of its data.
constexpr std::size_t kFreeValues = std::size_t{1} << 22;
constexpr std::size_t kReadValuesOfByte = 16;

template <class Number, class Component>
Number ToNumber(Component component, bool isNormalized) {
  if constexpr (std::is_unsigned_v<Number> && !std::is_unsigned_v<Component>) {
    return {};  // refused before
  } else if constexpr (std::is_same_v<Number, float> && std::is_integral_v<Component>) {
    const auto number = static_cast<float>(component);
    if (!isNormalized) return number;
    return std::max(number / static_cast<float>(std::numeric_limits<Component>::max()), -1.0f);
  } else {
    return static_cast<Number>(component);
  }
}

std::size_t ComponentSize(int componentType) {
  std::size_t size = 0;
  WithGltfComponent(componentType, [&](auto component) { size = sizeof component; });
  return size;
}

/// The value whose components begin at `from`.
template <class Value, class Number, std::size_t components, class Component>
Value ValueAt(const char* from, bool isNormalized) {
  std::array<Component, components> stored;
  std::memcpy(stored.data(), from, sizeof stored);
  if constexpr (std::is_same_v<Number, Component>) {
    return std::bit_cast<Value>(stored);
  } else {
    std::array<Number, components> numbers;
    for (std::size_t k = 0; k < components; ++k) {
      numbers[k] = ToNumber<Number>(stored[k], isNormalized);
    }
    return std::bit_cast<Value>(numbers);
  }
}

std::string PlaceOf(int accessor) {
  return fmt::format("accessors[{}]", accessor);
}

}  // namespace

/// Where the elements of an accessor are, all within bounds.
struct GltfAccessors::Elements {
  const char* first = nullptr;  ///< null: all are 0
  std::size_t stride = 0;
  std::size_t count = 0;
  int componentType = 0;
};

GltfPoints GltfAccessors::Points(int accessor) {
  CheckType(accessor, "VEC3");
  return Kept(accessor, [&] { return Read<Point3, float, 3>(accessor); });
}

GltfPoints GltfAccessors::TexturePoints(int accessor) {
  CheckType(accessor, "VEC2");
  return Kept(accessor, [&] {
    std::vector<Point3> points;
    const auto pairs = Read<std::array<float, 2>, float, 2>(accessor);
    points.reserve(pairs.size());
    for (const auto& [u, v] : pairs) points.push_back({u, 1.0f - v, 0.0f});
    return points;
  });
}

void GltfAccessors::CheckType(int accessor, std::string_view type) const {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  if (source.type == type) return;
  RefuseFile(path_, fmt::format("{}.type: \"{}\", what it is used for needs \"{}\"",
                                PlaceOf(accessor), FirstLine(source.type), type));
}

template <class Make>
GltfPoints GltfAccessors::Kept(int accessor, const Make& make) {
  if (const auto known = points_.find(accessor); known != points_.end()) return known->second;
  auto points = std::make_shared<const std::vector<Point3>>(make());
  kept_ += points->size();
  if (kept_ > kFreeValues + buffers_.Size()) {
    points_.clear();
    kept_ = points->size();
  }
  points_[accessor] = points;
  return points;
}

std::vector<std::array<float, 4>> GltfAccessors::Quadruples(int accessor) {
  CheckType(accessor, "VEC4");
  return Read<std::array<float, 4>, float, 4>(accessor);
}

std::vector<std::array<float, 16>> GltfAccessors::Matrices(int accessor) {
  CheckType(accessor, "MAT4");
  return Read<std::array<float, 16>, float, 16>(accessor);
}

std::vector<std::uint32_t> GltfAccessors::Indices(int accessor) {
  CheckType(accessor, "SCALAR");
  return Read<std::uint32_t, std::uint32_t, 1>(accessor);
}

std::vector<std::array<std::uint32_t, 4>> GltfAccessors::Joints(int accessor) {
  CheckType(accessor, "VEC4");
  return Read<std::array<std::uint32_t, 4>, std::uint32_t, 4>(accessor);
}

void GltfAccessors::Replace(int accessor, int componentType, std::string bytes) {
  points_.erase(accessor);
  replaced_[accessor] = {componentType, std::move(bytes)};
}

template <class Value, class Number, std::size_t components>
std::vector<Value> GltfAccessors::Read(int accessor) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const Elements elements = Find(accessor, components);
  const bool isSigned = elements.componentType == kGltfByte || elements.componentType == kGltfShort;
  if (std::is_integral_v<Number> && (isSigned || elements.componentType == kGltfFloat)) {
    RefuseFile(path_, fmt::format("{}.componentType: {} is none of an index", PlaceOf(accessor),
                                  elements.componentType));
  }
  std::vector<Value> values(elements.count);
  if (elements.first != nullptr) {
    WithGltfComponent(elements.componentType, [&](auto component) {
      const char* from = elements.first;
      for (Value& value : values) {
        value = ValueAt<Value, Number, components, decltype(component)>(from, source.isNormalized);
        from += elements.stride;
      }
    });
  }
  if (source.sparse && !replaced_.contains(accessor)) {
    ApplySparse<Value, Number, components>(accessor, values);
  }
  return values;
}

template <class Value, class Number, std::size_t components>
void GltfAccessors::ApplySparse(int accessor, std::vector<Value>& values) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const GltfSparse& sparse = *source.sparse;
  const std::string place = PlaceOf(accessor) + ".sparse";
  std::size_t indexStride = ComponentSize(sparse.indexType);
  if (sparse.indexType != kGltfUnsignedByte && sparse.indexType != kGltfUnsignedShort &&
      sparse.indexType != kGltfUnsignedInt) {
    RefuseFile(path_, fmt::format("{}.indices.componentType: {} is none of an index", place,
                                  sparse.indexType));
  }
  const char* index = Range(sparse.indexView, sparse.indexOffset, sparse.count, indexStride,
                            indexStride, place + ".indices");
  std::size_t stride = components * ComponentSize(source.componentType);
  const char* from =
      Range(sparse.valueView, sparse.valueOffset, sparse.count, stride, stride, place + ".values");
  WithGltfComponent(source.componentType, [&](auto component) {
    for (std::size_t i = 0; i < sparse.count; ++i, index += indexStride, from += stride) {
      std::uint32_t target = 0;
      std::memcpy(&target, index, ComponentSize(sparse.indexType));
      if (target >= values.size()) {
        RefuseFile(path_, fmt::format("{}.indices: {}, there are {} elements", place, target,
                                      values.size()));
      }
      values[target] =
          ValueAt<Value, Number, components, decltype(component)>(from, source.isNormalized);
    }
  });
}

GltfAccessors::Elements GltfAccessors::Find(int accessor, std::size_t components) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const auto replaced = replaced_.find(accessor);
  CountUse(accessor);
  Elements elements{.count = source.count, .componentType = source.componentType};
  if (replaced != replaced_.end()) elements.componentType = replaced->second.componentType;
  const std::size_t size = components * ComponentSize(elements.componentType);
  if (size == 0) {
    RefuseFile(path_, fmt::format("{}.componentType: {} is not known", PlaceOf(accessor),
                                  elements.componentType));
  }
  elements.stride = size;
  if (replaced != replaced_.end()) {
    const std::string& bytes = replaced->second.bytes;
    if (bytes.size() / size < source.count) {
      RefuseFile(path_, fmt::format("{}.count: {}, its data has {} elements", PlaceOf(accessor),
                                    source.count, bytes.size() / size));
    }
    elements.first = bytes.data();
  } else if (source.bufferView != kNoGltfIndex) {
    elements.stride = document_.bufferViews[static_cast<std::size_t>(source.bufferView)].byteStride;
    elements.first = Range(source.bufferView, source.byteOffset, source.count, elements.stride,
                           size, PlaceOf(accessor));
  }
  return elements;
}

/// The first of `count` elements of `size` bytes within a buffer view. A stride of 0 becomes the
/// size.
const char* GltfAccessors::Range(int view, std::size_t offset, std::size_t count,
                                 std::size_t& stride, std::size_t size, const std::string& place) {
  if (view == kNoGltfIndex) RefuseFile(path_, place + ".bufferView: is missing");
  if (stride == 0) stride = size;
  if (stride < size) {
    RefuseFile(path_,
               fmt::format("bufferViews[{}].byteStride: {}, the elements of {} have {} bytes", view,
                           stride, place, size));
  }
  const std::string_view bytes = buffers_.View(view);
  // Offsets, counts and strides have 40 bits each: divided, since a product may not fit.
  const bool fits = count == 0 || (offset <= bytes.size() && size <= bytes.size() - offset &&
                                   (count - 1) <= (bytes.size() - offset - size) / stride);
  if (!fits) {
    RefuseFile(path_,
               fmt::format("{}: {} elements of {} bytes from byte {} on, bufferViews[{}] has "
                           "{} bytes",
                           place, count, stride, offset, view, bytes.size()));
  }
  return count == 0 ? bytes.data() : bytes.data() + offset;
}

void GltfAccessors::CountUse(int accessor) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const std::size_t count = source.count;
  const bool hasData = source.bufferView != kNoGltfIndex || replaced_.contains(accessor);
  read_ += count;
  const std::size_t size = buffers_.Size();
  const bool isPlausible =
      read_ <= kFreeValues + kReadValuesOfByte * size && (hasData || count <= kFreeZeros + size);
  if (isPlausible) return;
  RefuseFile(path_, fmt::format("{}.count: {}, more than a file of this size can hold",
                                PlaceOf(accessor), count));
}

}  // namespace mapexport
