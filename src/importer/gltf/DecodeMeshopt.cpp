// EXT_meshopt_compression. The library checks its streams, but neither strides nor counts: it ends
// the process on bad ones.
#include "importer/gltf/DecodeMeshopt.h"

#include <cstddef>
#include <cstdint>
#include <span>

#include <fmt/format.h>
#include <meshoptimizer.h>

#include "system/ByteOrder.h"

namespace mapexport {
namespace {

using Mode = GltfMeshopt::Mode;
using Filter = GltfMeshopt::Filter;

/// Whether the filter can work on elements of that size.
bool FitsFilter(Filter filter, std::size_t stride) {
  switch (filter) {
    case Filter::kNone:
      return true;
    case Filter::kOctahedral:
      return stride == 4 || stride == 8;
    case Filter::kQuaternion:
      return stride == 8;
    case Filter::kExponential:
      return stride % 4 == 0;
  }
  return false;
}

void ApplyFilter(Filter filter, std::string& bytes, std::size_t count, std::size_t stride) {
  if (filter == Filter::kNone) return;
  const std::size_t numberSize = filter == Filter::kOctahedral   ? stride / 4
                                 : filter == Filter::kQuaternion ? sizeof(std::int16_t)
                                                                 : sizeof(std::uint32_t);
  const auto numbers = std::as_writable_bytes(std::span(bytes));
  ToFileOrder(numbers, numberSize);
  if (filter == Filter::kOctahedral) meshopt_decodeFilterOct(bytes.data(), count, stride);
  if (filter == Filter::kQuaternion) meshopt_decodeFilterQuat(bytes.data(), count, stride);
  if (filter == Filter::kExponential) meshopt_decodeFilterExp(bytes.data(), count, stride);
  ToFileOrder(numbers, numberSize);
}

std::string Defect(const GltfMeshopt& source, std::string_view data) {
  constexpr std::size_t kLargestStride = 256;
  const bool isAttributes = source.mode == Mode::kAttributes;
  const bool isStrideSound = isAttributes
                                 ? source.byteStride > 0 && source.byteStride <= kLargestStride &&
                                       source.byteStride % 4 == 0
                                 : source.byteStride == 2 || source.byteStride == 4;
  if (!isStrideSound) return fmt::format(".byteStride: {} is none of this mode", source.byteStride);
  if (source.mode == Mode::kTriangles && source.count % 3 != 0) {
    return fmt::format(".count: {}, triangles have 3 indices each", source.count);
  }
  if (!isAttributes && source.filter != Filter::kNone) {
    return ".filter: is not one of this mode";
  }
  if (!FitsFilter(source.filter, source.byteStride)) {
    return fmt::format(".filter: does not work on elements of {} bytes", source.byteStride);
  }
  // The fewest bytes that so many elements take: 1 for 64 of attributes, for a triangle, for an
  // index.
  const std::size_t fewest = isAttributes ? source.count / 64 * source.byteStride
                             : source.mode == Mode::kTriangles ? source.count / 3
                                                               : source.count;
  if (fewest > data.size()) {
    return fmt::format(".count: {}, its {} bytes can't hold so many", source.count, data.size());
  }
  return {};
}

}  // namespace

std::string DecodeMeshopt(const GltfMeshopt& source, std::string_view data, std::string& bytes) {
  std::string defect = Defect(source, data);
  if (!defect.empty()) return defect;
  bytes.assign(source.count * source.byteStride, '\0');
  if (bytes.empty()) return {};
  const auto* const begin = reinterpret_cast<const unsigned char*>(data.data());
  int error = 0;
  switch (source.mode) {
    case Mode::kAttributes:
      error = meshopt_decodeVertexBuffer(bytes.data(), source.count, source.byteStride, begin,
                                         data.size());
      break;
    case Mode::kTriangles:
      error = meshopt_decodeIndexBuffer(bytes.data(), source.count, source.byteStride, begin,
                                        data.size());
      break;
    case Mode::kIndices:
      error = meshopt_decodeIndexSequence(bytes.data(), source.count, source.byteStride, begin,
                                          data.size());
      break;
  }
  if (error != 0) return ": its data is damaged";
  // The library gives indices in this processor's order.
  if (source.mode != Mode::kAttributes) {
    ToFileOrder(std::as_writable_bytes(std::span(bytes)), source.byteStride);
  }
  ApplyFilter(source.filter, bytes, source.count, source.byteStride);
  return {};
}

}  // namespace mapexport
