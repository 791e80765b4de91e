#include "modelreader/CheckParts.h"

#include <utility>

namespace mapexport {

namespace {

constexpr std::uint64_t kCountBytes = 4;

}  // namespace

void CheckParts::BeginGroup() {
  group_ = {};  // one that could not be read to its end may be left there
  parts_ = {};
}

void CheckParts::Expect(const reader::Batch*, std::uint32_t count) {
  group_.batches.reserve(count);
  parts_.batches.reserve(count);
  parts_.batchOffsets.reserve(count);
}

void CheckParts::Expect(const reader::SurfaceSet*, std::uint32_t count) {
  parts_.surfaceSets.reserve(count);
  parts_.setOffsets.reserve(count);
}

void CheckParts::Take(StrictSource&, const reader::Material& material) {
  ++lengths_.materials;
  if (material.twoSided) ++lengths_.twoSidedMaterials;
  if (material.HasTexture()) {
    lengths_.texturedMaterials.push_back(
        {std::string(material.header.name), std::string(material.textureName)});
  }
}

void CheckParts::Take(StrictSource& in, const reader::Batch& batch) {
  group_.batches.push_back({batch.planes.size(), batch.normals.size()});
  parts_.batches.push_back(batch.vertexIndices);
  // The block begins with the material and the face count.
  parts_.batchOffsets.push_back(in.OffsetOf(batch.planes.data()) - 2 * kCountBytes);
}

void CheckParts::Take(StrictSource& in, const reader::SurfaceSet& set) {
  parts_.surfaceSets.push_back(set);
  parts_.setOffsets.push_back(in.OffsetOf(set.faces.data()));
}

void CheckParts::Take(StrictSource& in, const reader::Group& group) {
  group_.vertices = group.vertices.size();
  if (in.FileLayout() == reader::Layout::kKob) {
    group_.collisionPoints = group.collisionPoints.size();
    group_.faces = group.faces.size();
    group_.surfaceSets = static_cast<std::uint32_t>(parts_.surfaceSets.size());
    parts_.group = group;
    parts_.planesOffset = in.OffsetOf(group.planes.data()) - kCountBytes;
    parts_.facesOffset = in.OffsetOf(group.faces.data());
    CheckFaceTable(parts_, *in.Here(), in.Problems());
  }
  lengths_.groups.push_back(std::move(group_));
}

}  // namespace mapexport
