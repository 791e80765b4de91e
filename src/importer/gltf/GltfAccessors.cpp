// The values of a glTF document's accessors.
#include "importer/gltf/GltfAccessors.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

#include <fmt/format.h>

#include "importer/SourceFile.h"
#include "importer/text/HostText.h"
#include "system/ByteOrder.h"

namespace mapexport {
namespace {

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

/// A value of its components. Two are texture coordinates, which glTF has with v down.
template <class Value, class Number, std::size_t components>
Value Made(const std::array<Number, components>& numbers) {
  if constexpr (components == 2) {
    return {numbers[0], 1 - numbers[1], 0};
  } else {
    return std::bit_cast<Value>(numbers);
  }
}

/// The value whose components begin at `from`.
template <class Value, class Number, std::size_t components, class Component>
Value ValueAt(const char* from, bool isNormalized) {
  std::array<Component, components> stored;
  std::memcpy(stored.data(), from, sizeof stored);
  ToFileOrder(std::span(stored));
  if constexpr (std::is_same_v<Number, Component>) {
    return Made<Value, Number, components>(stored);
  } else {
    std::array<Number, components> numbers;
    for (std::size_t k = 0; k < components; ++k) {
      numbers[k] = ToNumber<Number>(stored[k], isNormalized);
    }
    return Made<Value, Number, components>(numbers);
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
  return Kept<Point3, float, 3>(accessor, "VEC3");
}

GltfPoints GltfAccessors::TexturePoints(int accessor) {
  return Kept<Point3, float, 2>(accessor, "VEC2");
}

GltfValues<std::array<float, 4>> GltfAccessors::Quadruples(int accessor) {
  return Kept<std::array<float, 4>, float, 4>(accessor, "VEC4");
}

GltfValues<std::uint32_t> GltfAccessors::Indices(int accessor) {
  return Kept<std::uint32_t, std::uint32_t, 1>(accessor, "SCALAR");
}

GltfValues<std::array<std::uint32_t, 4>> GltfAccessors::Joints(int accessor) {
  return Kept<std::array<std::uint32_t, 4>, std::uint32_t, 4>(accessor, "VEC4");
}

std::vector<std::array<float, 16>> GltfAccessors::Matrices(int accessor) {
  CheckType(accessor, "MAT4");
  return Read<std::array<float, 16>, float, 16>(accessor);
}

void GltfAccessors::CheckType(int accessor, std::string_view type) const {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  if (source.type == type) return;
  RefuseFile(path_, fmt::format("{}.type: \"{}\", what it is used for needs \"{}\"",
                                PlaceOf(accessor), FirstLine(source.type), type));
}

template <class Value, class Number, std::size_t components>
GltfValues<Value> GltfAccessors::Kept(int accessor, std::string_view type) {
  CheckType(accessor, type);
  KeptValues<Value>& kept = std::get<KeptValues<Value>>(kept_);
  if (const auto known = kept.find(accessor); known != kept.end()) return known->second;
  auto values =
      std::make_shared<const std::vector<Value>>(Read<Value, Number, components>(accessor));
  // Most are read once: only what is read again is kept, so that memory is used again.
  if (!wasRead_[static_cast<std::size_t>(accessor)]) {
    wasRead_[static_cast<std::size_t>(accessor)] = true;
    return values;
  }
  keptCount_ += values->size();
  if (keptCount_ > budget_.MostKept()) {
    std::apply([](auto&... lists) { (lists.clear(), ...); }, kept_);
    keptCount_ = values->size();
  }
  kept.emplace(accessor, values);
  return values;
}

void GltfAccessors::TakeFromDraco(int accessor, const DracoMesh& mesh, int attribute) {
  const bool isIndices = attribute == kNoGltfIndex;
  const std::size_t count = isIndices ? mesh.IndexCount() : mesh.VertexCount();
  const std::size_t wanted = document_.accessors[static_cast<std::size_t>(accessor)].count;
  if (count != wanted) {
    RefuseFile(path_, fmt::format("{}.count: {}, its Draco data has {} {}", PlaceOf(accessor),
                                  wanted, count, isIndices ? "indices" : "vertices"));
  }
  DracoSource& source = draco_[accessor];
  if (source == DracoSource{&mesh, attribute}) return;
  source = {&mesh, attribute};
  std::apply([&](auto&... lists) { (lists.erase(accessor), ...); }, kept_);
}

template <class Value, class Number, std::size_t components>
std::vector<Value> GltfAccessors::Read(int accessor) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  std::string decoded;
  const Elements elements = Find(accessor, components, decoded);
  const bool isSigned = elements.componentType == kGltfByte || elements.componentType == kGltfShort;
  if (std::is_integral_v<Number> && (isSigned || elements.componentType == kGltfFloat)) {
    RefuseFile(path_, fmt::format("{}.componentType: {} is none of an index", PlaceOf(accessor),
                                  elements.componentType));
  }
  std::vector<Value> values(elements.count);
  if (elements.first != nullptr) {
    WithGltfComponent(elements.componentType, [&](auto component) {
      if constexpr (kMemoryIsFileOrder && std::is_same_v<Number, decltype(component)> &&
                    components != 2) {
        if (elements.stride == sizeof(Value) && !values.empty()) {
          std::memcpy(values.data(), elements.first, values.size() * sizeof(Value));
          return;
        }
      }
      const char* from = elements.first;
      for (Value& value : values) {
        value = ValueAt<Value, Number, components, decltype(component)>(from, source.isNormalized);
        from += elements.stride;
      }
    });
  }
  if (source.sparse && !draco_.contains(accessor)) {
    ApplySparse<Value, Number, components>(accessor, values);
  }
  return values;
}

template <class Value, class Number, std::size_t components>
void GltfAccessors::ApplySparse(int accessor, std::vector<Value>& values) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const GltfSparse& sparse = *source.sparse;
  const std::string place = PlaceOf(accessor) + ".sparse";
  if (sparse.count > source.count) {
    RefuseFile(path_, fmt::format("{}.count: {}, there are {} elements", place, sparse.count,
                                  source.count));
  }
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
      WithGltfComponent(sparse.indexType, [&](auto of) {
        // Others were refused above.
        if constexpr (std::is_unsigned_v<decltype(of)>) target = FileNumber<decltype(of)>(index);
      });
      if (target >= values.size()) {
        RefuseFile(path_, fmt::format("{}.indices: {}, there are {} elements", place, target,
                                      values.size()));
      }
      values[target] =
          ValueAt<Value, Number, components, decltype(component)>(from, source.isNormalized);
    }
  });
}

/// `decoded` gets the bytes of an accessor whose data is compressed.
GltfAccessors::Elements GltfAccessors::Find(int accessor, std::size_t components,
                                            std::string& decoded) {
  const GltfAccessor& source = document_.accessors[static_cast<std::size_t>(accessor)];
  const auto draco = draco_.find(accessor);
  const bool isDraco = draco != draco_.end();
  const std::string place = PlaceOf(accessor);
  Elements elements{.count = source.count, .componentType = source.componentType};
  if (isDraco && draco->second.attribute == kNoGltfIndex) elements.componentType = kGltfUnsignedInt;
  const std::size_t size = components * ComponentSize(elements.componentType);
  if (size == 0) {
    RefuseFile(path_,
               fmt::format("{}.componentType: {} is not known", place, elements.componentType));
  }
  elements.stride = size;
  budget_.TakeValues(source.count, place);
  if (isDraco) {
    const auto [mesh, attribute] = draco->second;
    decoded = attribute == kNoGltfIndex
                  ? mesh->Indices()
                  : mesh->Values(attribute, elements.componentType, components);
    // Empty, or an accessor that serves for indices and an attribute.
    if (decoded.size() / size < source.count) {
      RefuseFile(path_, place + ": its Draco data does not fit its type");
    }
    elements.first = decoded.data();
  } else if (source.bufferView != kNoGltfIndex) {
    elements.stride = document_.bufferViews[static_cast<std::size_t>(source.bufferView)].byteStride;
    elements.first =
        Range(source.bufferView, source.byteOffset, source.count, elements.stride, size, place);
  } else {
    budget_.CheckZeros(source.count, place);
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

}  // namespace mapexport
