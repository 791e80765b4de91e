// The static geometry gathered from a tree of host nodes.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "exporter/base/GrowableArray.h"
#include "exporter/geometry/AttributeIndex.h"
#include "exporter/geometry/GroupFace.h"
#include "exporter/geometry/RenderBatch.h"
#include "exporter/geometry/SurfaceSet.h"
#include "exporter/geometry/VertexAttribute.h"
#include "exporter/materials/MapRecord.h"
#include "host/Point3.h"

namespace mapexport {

/// The plane of a face: normal . p + d = 0 for its points.
struct CollisionPlane {
  Point3 normal;
  float d = 0.0f;
};

/// One shared vertex list, triangles, per-corner attributes, and surface sets that sort the faces
/// by their flags. Filled by one walk of the node tree, changed by the clean-up passes, then
/// written.
class GeometryGroup : public MapRecord {
 public:
  GeometryGroup() : MapRecord(kGeometryGroupType, 2) {}
  ~GeometryGroup() override = default;
  GeometryGroup(const GeometryGroup&) = default;
  GeometryGroup(GeometryGroup&&) = default;
  /// By way of a copy: assigned one by one, faces would keep the scratch of those they replace.
  GeometryGroup& operator=(const GeometryGroup& other) { return *this = GeometryGroup(other); }
  GeometryGroup& operator=(GeometryGroup&&) = default;

  std::vector<SurfaceSet> surfaceSets;
  GrowableArray<GroupFace, 10> faces;
  GrowableArray<Point3> vertices;             ///< world positions in export coordinates
  GrowableArray<VertexAttribute> attributes;  ///< who changes or removes one clears attributeIndex
  std::uint32_t vertexCounter = 0;            ///< vertices gathered; the next node's first vertex
  std::uint32_t faceCounter = 0;              ///< faces gathered; the index of the next face
  std::int32_t nodeCounter = 0;               ///< meshes gathered
  Point3 boundsMax{-std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(),
                   -std::numeric_limits<float>::max()};  ///< of the gathered vertices, per axis
  Point3 boundsMin{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                   std::numeric_limits<float>::max()};  ///< of the gathered vertices, per axis

  // Built when the group is written.
  RenderBatchList batches;
  std::vector<Point3> collisionPoints;          ///< second layout only
  std::vector<CollisionPlane> collisionPlanes;  ///< second layout only

  AttributeIndex attributeIndex;    ///< AddAttribute's view of `attributes`
  SurfaceSetIndex surfaceSetIndex;  ///< FindOrAddSurfaceSet's view of `surfaceSets`
};

/// The index of the first surface set with these flags, of a new set named "NONE" when there is
/// none. Constant time for flags that keywords can give.
int FindOrAddSurfaceSet(GeometryGroup& group, std::uint32_t flags);

/// Appends a surface set of that name with flags 0 and returns its index.
int AddStaticSurfaceSet(GeometryGroup& group, const CStr& name);

/// The index of the first attribute that matches; when none does, appends `attribute` and returns
/// its index. Literal form: AddAttribute in tests/reference/LiteralGeometry.h, a scan from the
/// first attribute. Constant time as long as few attributes are close to each other. Different ones
/// within 0.05 in position and texture coordinates and 0.125 in normal are compared one by one:
/// 400,000 random corners there cost some 2,800 comparisons each.
int AddAttribute(GeometryGroup& group, const VertexAttribute& attribute);
/// The same with the place of the attribute's position in the group's index, which must know all
/// attributes.
int AddAttribute(GeometryGroup& group, const VertexAttribute& attribute,
                 const AttributePlace& place);

/// Removes face `f` from its surface set and from the faces. Later faces move down by one, and the
/// sets' face indices follow. Costs a pass over all faces and sets: RemoveFaces removes many at
/// once.
void RemoveFace(GeometryGroup& group, std::uint32_t f);

}  // namespace mapexport
