// KHR_draco_mesh_compression: the only file that knows the library of it.
#include "importer/gltf/DecodeDraco.h"

#include <cstring>
#include <memory>

#include <draco/compression/decode.h>
#include <fmt/format.h>

#include "importer/gltf/GltfAccessors.h"

namespace mapexport {
namespace {

template <class Component>
bool Extract(const draco::PointAttribute& source, std::size_t vertices, DracoAttribute& into) {
  const std::size_t size = into.components * sizeof(Component);
  into.bytes.assign(vertices * size, '\0');
  std::vector<Component> element(into.components);
  for (std::size_t v = 0; v < vertices; ++v) {
    const auto value = source.mapped_index(draco::PointIndex(static_cast<std::uint32_t>(v)));
    if (value.value() >= source.size() ||
        !source.ConvertValue(value, static_cast<std::int8_t>(into.components), element.data())) {
      return false;
    }
    std::memcpy(into.bytes.data() + v * size, element.data(), size);
  }
  return true;
}

bool ExtractAs(int componentType, const draco::PointAttribute& source, std::size_t vertices,
               DracoAttribute& into) {
  bool isDone = false;
  WithGltfComponent(componentType, [&](auto component) {
    isDone = Extract<decltype(component)>(source, vertices, into);
  });
  return isDone;
}

}  // namespace

std::string DecodeDraco(std::string_view data, std::vector<DracoAttribute>& attributes,
                        DracoMesh& mesh) {
  draco::DecoderBuffer buffer;
  buffer.Init(data.data(), data.size());
  draco::Decoder decoder;
  draco::StatusOr<std::unique_ptr<draco::Mesh>> result = decoder.DecodeMeshFromBuffer(&buffer);
  if (!result.ok() || result.value() == nullptr) return "its data is damaged";
  const draco::Mesh& decoded = *result.value();
  mesh.vertices = decoded.num_points();
  mesh.indices.resize(std::size_t{decoded.num_faces()} * 3 * sizeof(std::uint32_t));
  char* into = mesh.indices.data();
  for (std::uint32_t f = 0; f < decoded.num_faces(); ++f) {
    for (const draco::PointIndex& corner : decoded.face(draco::FaceIndex(f))) {
      const std::uint32_t index = corner.value();
      if (index >= mesh.vertices) return "its data has an index out of range";
      std::memcpy(into, &index, sizeof index);
      into += sizeof index;
    }
  }
  for (DracoAttribute& attribute : attributes) {
    const draco::PointAttribute* const source = decoded.GetAttributeByUniqueId(attribute.id);
    if (source == nullptr) return fmt::format("its data has no attribute {}", attribute.id);
    if (!ExtractAs(attribute.componentType, *source, mesh.vertices, attribute)) {
      return fmt::format("attribute {} of its data does not fit its accessor", attribute.id);
    }
  }
  return {};
}

}  // namespace mapexport
