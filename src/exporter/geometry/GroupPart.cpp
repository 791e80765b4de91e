#include "exporter/geometry/GroupPart.h"

#include <algorithm>

namespace mapexport {

std::span<const std::uint32_t> PartIndices::Number() {
  std::ranges::sort(used_);
  for (std::uint32_t i = 0; i < used_.size(); ++i) own_[used_[i]] = i;
  return used_;
}

void PartIndices::Clear() {
  for (const std::uint32_t entry : used_) own_[entry] = kNone;
  used_.clear();
}

PartMaker::PartMaker(const GeometryGroup& group)
    : group_(group),
      vertices_(group.vertices.size()),
      attributes_(group.attributes.size()),
      sets_(group.surfaceSets.size()) {
  part_.boundsMin = group.boundsMin;
  part_.boundsMax = group.boundsMax;
  part_.nodeCounter = group.nodeCounter;
}

void PartMaker::UseLists(std::span<const std::uint32_t> faces) {
  for (PartIndices* indices : {&vertices_, &attributes_, &sets_}) indices->Clear();
  for (std::size_t i = 0; i < faces.size(); ++i) {
    FetchAhead(group_.faces, faces, i);
    const GroupFace& face = group_.faces[faces[i]];
    for (const std::uint32_t v : face.v) vertices_.Use(v);
    for (const std::uint32_t a : face.a) attributes_.Use(a);
    sets_.Use(static_cast<std::uint32_t>(face.surfaceSet));
  }
  for (std::uint32_t s = 0; isFirst_ && s < group_.surfaceSets.size(); ++s) {
    if (group_.surfaceSets[s].faces.empty()) sets_.Use(s);
  }
  isFirst_ = false;
}

void PartMaker::CopyLists() {
  part_.surfaceSets.clear();
  for (const std::uint32_t s : sets_.Number()) {
    SurfaceSet& set = part_.surfaceSets.emplace_back();
    set.name = group_.surfaceSets[s].name;
    set.flags = group_.surfaceSets[s].flags;
    set.smoothing = group_.surfaceSets[s].smoothing;
  }
  part_.vertices.Clear();
  for (const std::uint32_t v : vertices_.Number()) part_.vertices.Append(group_.vertices[v]);
  part_.attributes.Clear();
  for (const std::uint32_t a : attributes_.Number()) part_.attributes.Append(group_.attributes[a]);
}

GeometryGroup& PartMaker::Make(std::span<const std::uint32_t> faces) {
  UseLists(faces);
  CopyLists();
  part_.name = group_.name;
  part_.batches = {};
  part_.collisionPoints.clear();
  part_.collisionPlanes.clear();
  part_.faces.Clear();
  part_.faces.Reserve(faces.size());
  for (std::uint32_t i = 0; i < faces.size(); ++i) {
    FetchAhead(group_.faces, faces, i);
    GroupFace face = group_.faces[faces[i]];
    for (std::uint32_t& v : face.v) v = vertices_.Of(v);
    for (std::uint32_t& a : face.a) a = attributes_.Of(a);
    const std::uint32_t set = sets_.Of(static_cast<std::uint32_t>(face.surfaceSet));
    face.surfaceSet = static_cast<std::int32_t>(set);
    part_.surfaceSets[set].faces.Append(i);
    part_.faces.Append(face);
  }
  part_.vertexCounter = static_cast<std::uint32_t>(part_.vertices.size());
  part_.faceCounter = static_cast<std::uint32_t>(part_.faces.size());
  return part_;
}

}  // namespace mapexport
