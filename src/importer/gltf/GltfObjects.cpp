// The meshes of glTF nodes, each made once.
#include "importer/gltf/GltfObjects.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <utility>

#include <fmt/format.h>

#include "importer/LeftOut.h"
#include "importer/SourceFile.h"
#include "importer/gltf/DecodeDraco.h"
#include "importer/gltf/GltfDeform.h"
#include "importer/gltf/GltfMaterials.h"
#include "importer/gltf/GltfTransform.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/text/HostText.h"

namespace mapexport {
namespace {

// Modes of primitives. What comes before is points, separate lines, a ring and a row of them.
constexpr int kLines = 1;
constexpr int kLineLoop = 2;
constexpr int kTriangles = 4;
constexpr int kTriangleStrip = 5;

/// What an empty primitive takes of the budget.
constexpr std::size_t kValuesOfPrimitive = 16;

/// The index of the attribute, kNoGltfIndex when there is none.
int Find(const GltfAttributes& attributes, std::string_view name) {
  const auto found = std::ranges::find(attributes, name, &GltfAttribute::name);
  return found == attributes.end() ? kNoGltfIndex : found->index;
}

std::size_t LineCount(int mode, std::size_t corners) {
  if (mode == kLines) return corners / 2;
  return mode == kLineLoop ? corners : corners - std::min<std::size_t>(corners, 1);
}

}  // namespace

struct GltfObjects::Deformation {
  std::span<const float> weights;  // of the morph targets
  bool isSkinned = false;
  std::span<const AffineMatrix> matrices;  // of the joints
  bool isTurned = false;                   // the triangles are turned over
};

NodeObject GltfObjects::Find(int index, const std::string& nodeName) {
  const GltfNode& node = document_.nodes[static_cast<std::size_t>(index)];
  if (node.mesh == kNoGltfIndex) return {};
  // The transform of a skinned mesh's node doesn't move it, but says which side is its front.
  const bool isTurned =
      node.skin != kNoGltfIndex && IsMirrored(worlds_[static_cast<std::size_t>(index)]);
  const auto [place, isNew] = objects_.try_emplace({node.mesh, node.skin, isTurned, node.weights});
  NodeObject& object = place->second;
  if (!isNew) return object;
  RebuiltMesh made = Make(node, isTurned);
  object.object = made.mesh == nullptr ? SceneObject::kHelper : SceneObject::kMesh;
  if (made.mesh != nullptr) object.material = materials_.OfParts(made.partMaterials, nodeName);
  object.mesh = std::move(made.mesh);
  return object;
}

RebuiltMesh GltfObjects::Make(const GltfNode& node, bool isTurned) {
  const GltfMesh& mesh = document_.meshes[static_cast<std::size_t>(node.mesh)];
  Deformation deformation;
  deformation.weights = node.weights.empty() ? mesh.weights : node.weights;
  deformation.isSkinned = node.skin != kNoGltfIndex;
  deformation.isTurned = isTurned;
  if (deformation.isSkinned) deformation.matrices = JointMatrices(node.skin);
  MeshBuilder builder(leftOut_);
  std::size_t targets = 0;
  for (std::size_t i = 0; i < mesh.primitives.size(); ++i) {
    targets = std::max(targets, mesh.primitives[i].targets.size());
    AddPrimitive(mesh.primitives[i], fmt::format("meshes[{}].primitives[{}]", node.mesh, i),
                 deformation, builder);
  }
  leftOut_.morphs += targets;
  return builder.Finish();
}

void GltfObjects::AddPrimitive(const GltfPrimitive& primitive, const std::string& place,
                               const Deformation& deformation, MeshBuilder& builder) {
  const int positionAccessor = mapexport::Find(primitive.attributes, "POSITION");
  if (positionAccessor == kNoGltfIndex) {
    ++leftOut_.primitives;
    return;
  }
  if (primitive.draco) ReadDraco(primitive, place);
  const GltfPoints positions = accessors_.Points(positionAccessor);
  std::vector<CornerIndices> triangles = Triangles(primitive, place, positions->size());
  if (triangles.empty()) return;
  if (deformation.isTurned) {
    for (CornerIndices& triangle : triangles) std::swap(triangle[1], triangle[2]);
  }

  const int normalAccessor = mapexport::Find(primitive.attributes, "NORMAL");
  GltfPoints normals;
  if (normalAccessor != kNoGltfIndex) {
    normals = OfVertices(accessors_.Points(normalAccessor), positions->size());
  }
  if (mapexport::Find(primitive.attributes, "COLOR_0") != kNoGltfIndex) {
    leftOut_.colours += positions->size();
  }
  const GltfPoints coordinates = TexturePoints(primitive, positions->size());

  std::vector<Point3> ownPositions;
  std::vector<Point3> ownNormals;
  const bool isMorphed =
      std::ranges::any_of(deformation.weights, [](float weight) { return weight != 0; });
  const bool isDeformed = deformation.isSkinned || (isMorphed && !primitive.targets.empty());
  if (isDeformed) {
    ownPositions = Morphed(primitive, place, "POSITION", *positions, deformation);
    if (normals != nullptr) ownNormals = Morphed(primitive, place, "NORMAL", *normals, deformation);
    if (deformation.isSkinned) Skin(primitive, place, deformation, ownPositions, ownNormals);
  }
  MeshPart part;
  part.positions = isDeformed ? std::span<const Point3>(ownPositions) : *positions;
  if (normals != nullptr)
    part.normals = isDeformed ? std::span<const Point3>(ownNormals) : *normals;
  if (coordinates != nullptr) part.textureCoordinates = *coordinates;
  part.triangles = triangles;
  part.material = primitive.material;
  builder.Add(part);
}

/// Puts what a Draco stream holds in the place of what the primitive's accessors do.
void GltfObjects::ReadDraco(const GltfPrimitive& primitive, const std::string& place) {
  const GltfDraco& draco = *primitive.draco;
  const std::string here = place + ".extensions.KHR_draco_mesh_compression";
  if (draco.bufferView == kNoGltfIndex) RefuseFile(path_, here + ".bufferView: is missing");
  if (primitive.indices == kNoGltfIndex) RefuseFile(path_, place + ".indices: is missing");
  const DracoMesh& mesh = buffers_.Draco(draco.bufferView, here);
  for (const GltfAttribute& attribute : draco.attributes) {
    const int accessor = mapexport::Find(primitive.attributes, attribute.name);
    if (accessor == kNoGltfIndex) continue;
    if (!mesh.HasAttribute(attribute.index)) {
      RefuseFile(path_, fmt::format("{}.attributes.{}: its data has no attribute {}", here,
                                    FirstLine(attribute.name), attribute.index));
    }
    accessors_.TakeFromDraco(accessor, mesh, attribute.index);
  }
  accessors_.TakeDracoIndices(primitive.indices, mesh);
}

/// Counts points and lines.
std::vector<CornerIndices> GltfObjects::Triangles(const GltfPrimitive& primitive,
                                                  const std::string& place, std::size_t vertices) {
  GltfValues<std::uint32_t> indices;
  std::vector<std::uint32_t> ownIndices;
  if (primitive.indices != kNoGltfIndex) {
    indices = accessors_.Indices(primitive.indices);
  } else {
    ownIndices.resize(vertices);
    std::iota(ownIndices.begin(), ownIndices.end(), 0);
  }
  const std::vector<std::uint32_t>& corners = indices == nullptr ? ownIndices : *indices;
  std::vector<CornerIndices> triangles;
  const std::size_t count = corners.size();
  budget_.TakeValues(kValuesOfPrimitive + count, place);
  if (primitive.mode < kLines) {
    leftOut_.points += count;
  } else if (primitive.mode < kTriangles) {
    leftOut_.lines += LineCount(primitive.mode, count);
  } else if (primitive.mode == kTriangles) {
    triangles.resize(count / 3);
    if (count >= 3)
      std::memcpy(triangles.data(), corners.data(), triangles.size() * sizeof(CornerIndices));
    if (count % 3 != 0) ++leftOut_.faces;
  } else if (count > 2) {
    triangles.reserve(count - 2);
    const bool isStrip = primitive.mode == kTriangleStrip;
    for (std::size_t i = 0; i + 2 < count; ++i) {
      if (!isStrip)
        triangles.push_back({corners[0], corners[i + 1], corners[i + 2]});
      else if (i % 2 == 0)
        triangles.push_back({corners[i], corners[i + 1], corners[i + 2]});
      else
        triangles.push_back({corners[i + 1], corners[i], corners[i + 2]});
    }
  }
  return triangles;
}

/// The points of an attribute, null when they aren't one for each vertex.
GltfPoints GltfObjects::OfVertices(GltfPoints points, std::size_t vertices) {
  if (points->size() == vertices) return points;
  ++leftOut_.attributes;
  return nullptr;
}

/// The coordinates that the material's picture is shown with; those of set 0 when it has none or
/// the mesh doesn't have its set.
GltfPoints GltfObjects::TexturePoints(const GltfPrimitive& primitive, std::size_t vertices) {
  const auto isSet = [](const GltfAttribute& a) { return a.name.starts_with("TEXCOORD_"); };
  if (std::ranges::count_if(primitive.attributes, isSet) > 1) ++leftOut_.channels;
  int set = 0;
  if (primitive.material != kNoGltfIndex) {
    const GltfMaterial& material =
        document_.materials[static_cast<std::size_t>(primitive.material)];
    if (const GltfTextureUse* const shown = ShownTexture(material)) set = shown->set;
  }
  int accessor = mapexport::Find(primitive.attributes, fmt::format("TEXCOORD_{}", set));
  if (accessor == kNoGltfIndex) accessor = mapexport::Find(primitive.attributes, "TEXCOORD_0");
  if (accessor == kNoGltfIndex) return nullptr;
  return OfVertices(accessors_.TexturePoints(accessor), vertices);
}

std::vector<Point3> GltfObjects::Morphed(const GltfPrimitive& primitive, const std::string& place,
                                         std::string_view attribute,
                                         const std::vector<Point3>& points,
                                         const Deformation& deformation) {
  budget_.TakeValues(points.size(), place);
  std::vector<Point3> morphed = points;
  const std::size_t count = std::min(deformation.weights.size(), primitive.targets.size());
  for (std::size_t t = 0; t < count; ++t) {
    const int accessor = mapexport::Find(primitive.targets[t], attribute);
    if (deformation.weights[t] == 0 || accessor == kNoGltfIndex) continue;
    budget_.TakeValues(points.size(), place);
    AddMorph(morphed, *accessors_.Points(accessor), deformation.weights[t]);
  }
  return morphed;
}

const std::vector<AffineMatrix>& GltfObjects::JointMatrices(int skin) {
  const auto [entry, isNew] = jointMatrices_.try_emplace(skin);
  std::vector<AffineMatrix>& matrices = entry->second;
  if (!isNew) return matrices;
  const GltfSkin& source = document_.skins[static_cast<std::size_t>(skin)];
  for (const int joint : source.joints)
    matrices.push_back(worlds_[static_cast<std::size_t>(joint)]);
  if (source.inverseBindMatrices == kNoGltfIndex) return matrices;
  const auto inverses = accessors_.Matrices(source.inverseBindMatrices);
  if (inverses.size() < matrices.size()) {
    RefuseFile(path_, fmt::format("skins[{}].inverseBindMatrices: {} matrices, there are {} joints",
                                  skin, inverses.size(), matrices.size()));
  }
  for (std::size_t i = 0; i < matrices.size(); ++i) {
    matrices[i] = matrices[i] * AffineFromColumns(inverses[i]);
  }
  return matrices;
}

void GltfObjects::Skin(const GltfPrimitive& primitive, const std::string& place,
                       const Deformation& deformation, std::vector<Point3>& positions,
                       std::vector<Point3>& normals) {
  GltfInfluences influences;
  for (int set = 0;; ++set) {
    const std::string name = fmt::format("JOINTS_{}", set);
    const int joints = mapexport::Find(primitive.attributes, name);
    const int weights = mapexport::Find(primitive.attributes, fmt::format("WEIGHTS_{}", set));
    if (joints == kNoGltfIndex || weights == kNoGltfIndex) break;
    budget_.TakeValues(positions.size(), place);
    influences.joints.push_back(accessors_.Joints(joints));
    influences.weights.push_back(accessors_.Quadruples(weights));
    const auto& used = *influences.joints.back();
    const std::size_t weightCount = influences.weights.back()->size();
    if (used.size() != positions.size() || weightCount != positions.size()) {
      RefuseFile(path_, fmt::format("{}.attributes.{}: {} joints and {} weights, there are {} "
                                    "positions",
                                    place, name, used.size(), weightCount, positions.size()));
    }
    for (const std::array<std::uint32_t, 4>& ofVertex : used) {
      const std::uint32_t highest = std::ranges::max(ofVertex);
      if (highest < deformation.matrices.size()) continue;
      RefuseFile(path_, fmt::format("{}.attributes.{}: {}, the skin has {} joints", place, name,
                                    highest, deformation.matrices.size()));
    }
  }
  SkinVertices(influences, deformation.matrices, positions, normals);
}

}  // namespace mapexport
