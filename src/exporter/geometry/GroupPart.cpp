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
      sets_(group.surfaceSets.size()) {}

GeometryGroup PartMaker::Make(std::span<const std::uint32_t> faces) {
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

  GeometryGroup part;
  part.name = group_.name;
  part.boundsMin = group_.boundsMin;
  part.boundsMax = group_.boundsMax;
  part.nodeCounter = group_.nodeCounter;
  for (const std::uint32_t s : sets_.Number()) {
    SurfaceSet& set = part.surfaceSets.emplace_back();
    set.name = group_.surfaceSets[s].name;
    set.flags = group_.surfaceSets[s].flags;
    set.smoothing = group_.surfaceSets[s].smoothing;
  }
  const std::span<const std::uint32_t> vertices = vertices_.Number();
  part.vertices.Reserve(vertices.size());
  for (const std::uint32_t v : vertices) part.vertices.Append(group_.vertices[v]);
  const std::span<const std::uint32_t> attributes = attributes_.Number();
  part.attributes.Reserve(attributes.size());
  for (const std::uint32_t a : attributes) part.attributes.Append(group_.attributes[a]);
  part.faces.Reserve(faces.size());
  for (std::uint32_t i = 0; i < faces.size(); ++i) {
    FetchAhead(group_.faces, faces, i);
    GroupFace face = group_.faces[faces[i]];
    for (std::uint32_t& v : face.v) v = vertices_.Of(v);
    for (std::uint32_t& a : face.a) a = attributes_.Of(a);
    const std::uint32_t set = sets_.Of(static_cast<std::uint32_t>(face.surfaceSet));
    face.surfaceSet = static_cast<std::int32_t>(set);
    part.surfaceSets[set].faces.Append(i);
    part.faces.Append(face);
  }
  part.vertexCounter = static_cast<std::uint32_t>(part.vertices.size());
  part.faceCounter = static_cast<std::uint32_t>(part.faces.size());
  return part;
}

}  // namespace mapexport
