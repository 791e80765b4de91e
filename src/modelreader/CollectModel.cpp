#include "modelreader/CollectModel.h"

#include <utility>

namespace mapexport {

namespace {

ModelHeader HeaderOf(const reader::Header& header) {
  return {header.typeCode, header.version, std::string(header.name)};
}

template <class T>
std::vector<T> EntriesOf(const reader::List<T>& list) {
  std::vector<T> entries(list.size());
  for (std::uint32_t i = 0; i < list.size(); ++i) entries[i] = list[i];
  return entries;
}

}  // namespace

void CollectModel::BeginGroup() {
  group_ = {};  // one that could not be read to its end may be left there
  check_.BeginGroup();
}

void CollectModel::Expect(const reader::Batch* kind, std::uint32_t count) {
  group_.batches.reserve(count);
  check_.Expect(kind, count);
}

void CollectModel::Expect(const reader::SurfaceSet* kind, std::uint32_t count) {
  group_.surfaceSets.reserve(count);
  check_.Expect(kind, count);
}

void CollectModel::Take(StrictSource& in, const reader::Material& material) {
  check_.Take(in, material);
  model_.materials.push_back({.header = HeaderOf(material.header),
                              .textureName = std::string(material.textureName),
                              .scalar1 = material.scalar1,
                              .scalar2 = material.scalar2,
                              .scalar3 = material.scalar3,
                              .modeValue = material.modeValue,
                              .ambient = material.ambient,
                              .diffuse = material.diffuse,
                              .specular = material.specular,
                              .twoSided = material.twoSided});
}

void CollectModel::Take(StrictSource& in, const reader::Batch& batch) {
  check_.Take(in, batch);
  ModelBatch& taken = group_.batches.emplace_back();
  taken.material = batch.material;
  taken.faces.resize(batch.planes.size());
  for (std::uint32_t i = 0; i < batch.planes.size(); ++i) {
    taken.faces[i] = {batch.planes[i], batch.vertexIndices[i], batch.cornerIndices[i]};
  }
  taken.corners.resize(batch.normals.size());
  for (std::uint32_t i = 0; i < batch.normals.size(); ++i) {
    const reader::TextureCoordinates texture = batch.textureCoordinates[i];
    taken.corners[i] = {batch.normals[i], texture.u, texture.v, batch.colours[i]};
  }
}

void CollectModel::Take(StrictSource& in, const reader::SurfaceSet& set) {
  check_.Take(in, set);
  group_.surfaceSets.push_back({std::string(set.name), set.flags, EntriesOf(set.faces)});
}

void CollectModel::Take(StrictSource& in, const reader::Group& group) {
  group_.header = HeaderOf(group.header);
  group_.vertices = EntriesOf(group.vertices);
  if (in.FileLayout() == reader::Layout::kKob) {
    group_.outerHeader = HeaderOf(group.outerHeader);
    group_.collisionPoints = EntriesOf(group.collisionPoints);
    group_.planes = EntriesOf(group.planes);
    group_.faces = EntriesOf(group.faces);
  }
  check_.Take(in, group);
  model_.groups.push_back(std::move(group_));
}

}  // namespace mapexport
