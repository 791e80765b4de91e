// KHR_draco_mesh_compression.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace draco {
class Mesh;
}

namespace mapexport {

/// A mesh that a Draco stream holds.
class DracoMesh {
 public:
  DracoMesh();
  DracoMesh(const DracoMesh&) = delete;
  DracoMesh& operator=(const DracoMesh&) = delete;
  ~DracoMesh();

  /// False when `data` is damaged. All else needs a mesh.
  bool Decode(std::string_view data);

  std::size_t VertexCount() const;
  std::size_t IndexCount() const;
  bool HasAttribute(int id) const;
  /// How many bytes it holds.
  std::size_t Size() const;

  /// 32-bit numbers, three for each triangle, all below VertexCount.
  std::string Indices() const;
  /// An attribute's values for each vertex, in components of that type of glTF, which is a known
  /// one; empty when they can't be turned into these.
  std::string Values(int id, int componentType, std::size_t components) const;

 private:
  std::unique_ptr<const draco::Mesh> mesh_;
};

}  // namespace mapexport
