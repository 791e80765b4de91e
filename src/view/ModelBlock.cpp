#include "view/ModelBlock.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <string_view>

#include "modelreader/ModelFaceFlags.h"
#include "view/BlockWriter.h"

namespace mapexport {
namespace {

// Bytes per entry of each long list.
constexpr std::uint64_t kPointBytes = 12;
constexpr std::uint64_t kPlaneBytes = 16;
constexpr std::uint64_t kBatchFaceBytes = kPlaneBytes + 12;
constexpr std::uint64_t kCornerBytes = 16;
constexpr std::uint64_t kFaceBytes = 16;

/// `number`, from -1 to 1, as a signed byte; 0 for NaN.
std::uint8_t SignedByte(float number) {
  if (std::isnan(number)) return 0;
  const float scaled = std::round(std::clamp(number, -1.0F, 1.0F) * 127.0F);
  return static_cast<std::uint8_t>(static_cast<std::int8_t>(scaled));
}

std::uint8_t ColourByte(float channel) {
  if (std::isnan(channel)) return 0;
  return static_cast<std::uint8_t>(std::round(std::clamp(channel, 0.0F, 1.0F) * 255.0F));
}

void WritePoint(const ModelPoint& point, BlockWriter& out) {
  out.F32(point.x);
  out.F32(point.y);
  out.F32(point.z);
}

void WritePoints(const std::vector<ModelPoint>& points, BlockWriter& out) {
  out.Count(points.size());
  for (const ModelPoint& point : points) WritePoint(point, out);
}

void WritePlane(const ModelPlane& plane, BlockWriter& out) {
  WritePoint(plane.normal, out);
  out.F32(plane.d);
}

void WriteColour(const ModelColour& colour, BlockWriter& out) {
  for (const float channel : {colour.r, colour.g, colour.b, colour.a}) out.F32(channel);
}

void WriteMaterial(const ModelMaterial& material, BlockWriter& out) {
  out.Text(material.header.name);
  out.Text(material.textureName);
  for (const float scalar : {material.scalar1, material.scalar2, material.scalar3}) out.F32(scalar);
  out.I32(material.modeValue);
  for (const ModelColour& colour : {material.ambient, material.diffuse, material.specular}) {
    WriteColour(colour, out);
  }
  out.U32(material.twoSided ? 1 : 0);
}

void WriteBatch(const ModelBatch& batch, BlockWriter& out) {
  out.I32(batch.material);
  out.Count(batch.faces.size());
  for (const ModelBatchFace& face : batch.faces) WritePlane(face.plane, out);
  for (const ModelBatchFace& face : batch.faces) {
    for (const std::uint16_t index : face.vertices) out.U16(index);
    for (const std::uint16_t index : face.corners) out.U16(index);
  }
  out.Count(batch.corners.size());
  for (const ModelCorner& corner : batch.corners) {
    for (const float axis : {corner.normal.x, corner.normal.y, corner.normal.z}) {
      out.U8(SignedByte(axis));
    }
    out.Align();
  }
  for (const ModelCorner& corner : batch.corners) {
    out.F32(corner.u);
    out.F32(corner.v);
  }
  for (const ModelCorner& corner : batch.corners) {
    const ModelColour& colour = corner.colour;
    for (const float channel : {colour.r, colour.g, colour.b, colour.a}) {
      out.U8(ColourByte(channel));
    }
  }
}

void WriteFaceTable(const ModelGroup& group, BlockWriter& out) {
  out.Count(group.faces.size());
  for (const ModelFace& face : group.faces) {
    for (const std::uint16_t index : face.vertices) out.U16(index);
    out.U16(face.position);
    out.U32(face.surfaceSet);
    out.I32(face.batch);
  }
  out.Count(group.surfaceSets.size());
  for (const ModelSurfaceSet& set : group.surfaceSets) {
    out.Text(set.name);
    out.U32(set.flags);
    out.Count(set.faces.size());
  }
}

void WriteGroup(const ModelGroup& group, ModelLayout layout, BlockWriter& out) {
  out.Text(group.header.name);
  WritePoints(group.vertices, out);
  out.Count(group.batches.size());
  for (const ModelBatch& batch : group.batches) WriteBatch(batch, out);
  if (layout != ModelLayout::kKob) return;
  WritePoints(group.collisionPoints, out);
  out.Count(group.planes.size());
  for (const ModelPlane& plane : group.planes) WritePlane(plane, out);
  WriteFaceTable(group, out);
}

/// The images, and which of them each material has.
void WriteTextures(const ModelFile& model, const ViewInfo& info, BlockWriter& out) {
  out.U32(info.textures ? 1 : 0);
  if (!info.textures) return;
  std::map<std::string_view, std::int32_t> places;
  out.Count(info.textures->size());
  for (const auto& [name, png] : *info.textures) {
    places.emplace(name, static_cast<std::int32_t>(places.size()));
    out.Text(png);
  }
  for (const ModelMaterial& material : model.materials) {
    const auto found = places.find(material.textureName);
    out.I32(found == places.end() ? -1 : found->second);
  }
}

void WriteBlock(const ModelFile& model, const ViewInfo& info, BlockWriter& out) {
  out.Text(info.fileName);
  out.U32(model.layout == ModelLayout::kKob ? 1 : 0);
  out.I32(info.coordinateSystem);
  out.U32(static_cast<std::uint32_t>(kModelIndexLimit));
  out.Count(std::size(kModelFaceFlags));
  for (const ModelFaceFlag& flag : kModelFaceFlags) {
    out.U32(flag.bit);
    out.Text(flag.keyword);
  }
  out.Count(model.materials.size());
  for (const ModelMaterial& material : model.materials) WriteMaterial(material, out);
  out.Count(model.groups.size());
  for (const ModelGroup& group : model.groups) WriteGroup(group, model.layout, out);
  WriteTextures(model, info, out);
  out.U32(info.comparison != nullptr ? 1 : 0);
  if (info.comparison == nullptr) return;
  WriteComparison(*info.comparison, out);
  WriteBlock(*info.comparison->models[1],
             {.fileName = info.comparison->fileName, .coordinateSystem = info.coordinateSystem},
             out);
}

}  // namespace

std::vector<std::byte> MakeModelBlock(const ModelFile& model, const ViewInfo& info) {
  BlockWriter out;
  std::uint64_t bytes = ModelBlockBytes(model);
  if (info.comparison != nullptr) bytes += ModelBlockBytes(*info.comparison->models[1]);
  out.Reserve(static_cast<std::size_t>(bytes));
  WriteBlock(model, info, out);
  return out.Take();
}

std::uint64_t ModelBlockBytes(const ModelFile& model) {
  std::uint64_t bytes = 0;
  for (const ModelGroup& group : model.groups) {
    bytes += kPointBytes * (group.vertices.size() + group.collisionPoints.size());
    for (const ModelBatch& batch : group.batches) {
      bytes += kBatchFaceBytes * batch.faces.size() + kCornerBytes * batch.corners.size();
    }
    bytes += kPlaneBytes * group.planes.size() + kFaceBytes * group.faces.size();
  }
  return bytes;
}

}  // namespace mapexport
