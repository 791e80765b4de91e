#include "geometry/GeometryGroup.h"

namespace mapexport {

int AddAttribute(GeometryGroup& group, const VertexAttribute& attribute) {
  if (group.attributeIndex.Count() > group.attributes.size()) group.attributeIndex.Clear();
  group.attributeIndex.Update(group.attributes);
  const std::uint32_t found = group.attributeIndex.FindFirst(attribute, group.attributes);
  if (found != AttributeIndex::kNone) return static_cast<int>(found);

  VertexAttribute stored = attribute;
  stored.colour.a = 1.0f;
  group.attributes.Append(stored);
  return static_cast<int>(group.attributes.size() - 1);
}

}  // namespace mapexport
