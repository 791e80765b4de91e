#include <cassert>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

int AddAttribute(GeometryGroup& group, const VertexAttribute& attribute) {
  AttributeIndex& index = group.attributeIndex;
  index.Update(group.attributes);
  return AddAttribute(group, attribute, index.PlaceOf(attribute.position));
}

int AddAttribute(GeometryGroup& group, const VertexAttribute& attribute,
                 const AttributePlace& place) {
  AttributeIndex& index = group.attributeIndex;
  assert(index.Count() == group.attributes.size());
  const std::uint32_t found = index.FindFirst(attribute, place, group.attributes);
  if (found != AttributeIndex::kNone) return static_cast<int>(found);

  group.attributes.Append(attribute);
  group.attributes[group.attributes.size() - 1].colour.a = 1.0f;
  index.AddDistinct(place, group.attributes);
  return static_cast<int>(group.attributes.size() - 1);
}

}  // namespace mapexport
