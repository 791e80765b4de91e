// KHR_draco_mesh_compression: the only file that knows the library of it.
#include "importer/gltf/DecodeDraco.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include <draco/compression/decode.h>

#include "importer/gltf/GltfAccessors.h"
#include "system/ByteOrder.h"

namespace mapexport {
namespace {

/// Adds each vertex's value to `bytes`; false when one can't be.
template <class Component>
bool Extract(const draco::PointAttribute& source, std::size_t vertices, std::size_t components,
             std::string& bytes) {
  const std::size_t size = components * sizeof(Component);
  bytes.resize(vertices * size);
  std::vector<Component> element(components);
  for (std::size_t v = 0; v < vertices; ++v) {
    const auto value = source.mapped_index(draco::PointIndex(static_cast<std::uint32_t>(v)));
    if (value.value() >= source.size() ||
        !source.ConvertValue(value, static_cast<std::int8_t>(components), element.data())) {
      return false;
    }
    ToFileOrder(std::span(element));
    std::memcpy(bytes.data() + v * size, element.data(), size);
  }
  return true;
}

bool HasSoundIndices(const draco::Mesh& mesh) {
  for (std::uint32_t f = 0; f < mesh.num_faces(); ++f) {
    for (const draco::PointIndex& corner : mesh.face(draco::FaceIndex(f))) {
      if (corner.value() >= mesh.num_points()) return false;
    }
  }
  return true;
}

}  // namespace

DracoMesh::DracoMesh() = default;
DracoMesh::~DracoMesh() = default;

bool DracoMesh::Decode(std::string_view data) {
  draco::DecoderBuffer buffer;
  buffer.Init(data.data(), data.size());
  draco::Decoder decoder;
  draco::StatusOr<std::unique_ptr<draco::Mesh>> result = decoder.DecodeMeshFromBuffer(&buffer);
  if (!result.ok() || result.value() == nullptr || !HasSoundIndices(*result.value())) return false;
  mesh_ = std::move(result).value();
  return true;
}

std::size_t DracoMesh::VertexCount() const {
  return mesh_->num_points();
}

std::size_t DracoMesh::IndexCount() const {
  return std::size_t{mesh_->num_faces()} * 3;
}

bool DracoMesh::HasAttribute(int id) const {
  return mesh_->GetAttributeByUniqueId(static_cast<std::uint32_t>(id)) != nullptr;
}

std::size_t DracoMesh::Size() const {
  std::size_t size = IndexCount() * sizeof(std::uint32_t);
  for (int i = 0; i < mesh_->num_attributes(); ++i) {
    const draco::PointAttribute& attribute = *mesh_->attribute(i);
    size += attribute.size() * static_cast<std::size_t>(attribute.byte_stride());
  }
  return size;
}

std::string DracoMesh::Indices() const {
  std::string bytes(IndexCount() * sizeof(std::uint32_t), '\0');
  char* into = bytes.data();
  for (std::uint32_t f = 0; f < mesh_->num_faces(); ++f) {
    for (const draco::PointIndex& corner : mesh_->face(draco::FaceIndex(f))) {
      std::uint32_t index = corner.value();
      ToFileOrder(std::span(&index, 1));
      std::memcpy(into, &index, sizeof index);
      into += sizeof index;
    }
  }
  return bytes;
}

std::string DracoMesh::Values(int id, int componentType, std::size_t components) const {
  const draco::PointAttribute* const source =
      mesh_->GetAttributeByUniqueId(static_cast<std::uint32_t>(id));
  std::string bytes;
  bool isDone = false;
  WithGltfComponent(componentType, [&](auto component) {
    isDone = Extract<decltype(component)>(*source, VertexCount(), components, bytes);
  });
  return isDone ? std::move(bytes) : std::string();
}

}  // namespace mapexport
