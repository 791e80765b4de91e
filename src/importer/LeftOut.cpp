// What of a foreign scene the host's scene can't hold.
#include "importer/LeftOut.h"

#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace mapexport {

ImportRemarks LeftOut::Items() const {
  struct Item {
    std::size_t count;
    std::string_view code;
    std::string_view one;
    std::string_view many;
  };
  const Item items[] = {
      {points, "points", "point", "points"},
      {lines, "lines", "line", "lines"},
      {curves, "curves", "curve or curved surface", "curves or curved surfaces"},
      {objects, "objects", "object of an unknown kind", "objects of unknown kinds"},
      {polygons, "polygons", "polygon that can't be triangulated",
       "polygons that can't be triangulated"},
      {vertices, "vertices", "vertex that isn't finite", "vertices that aren't finite"},
      {faces, "triangles", "triangle with a corner that is missing or not finite",
       "triangles with a corner that is missing or not finite"},
      {textureCorners, "texture-coordinates", "texture coordinate that isn't finite",
       "texture coordinates that aren't finite"},
      {creases, "creases", "hard edge within a smooth surface",
       "hard edges within smooth surfaces"},
      {transforms, "transforms", "node transform that isn't finite",
       "node transforms that aren't finite"},
      {meshes, "meshes", "mesh that isn't in the file", "meshes that aren't in the file"},
      {colours, "colours", "vertex colour", "vertex colours"},
      {channels, "channels", "mesh's second texture channel", "meshes' second texture channels"},
      {materials, "materials", "material without effect", "materials without effect"},
      {bones, "bones", "bone", "bones"},
      {animations, "animations", "animation", "animations"},
      {cameras, "cameras", "camera", "cameras"},
      {lights, "lights", "light", "lights"}};
  ImportRemarks remarks;
  for (const Item& item : items) {
    if (item.count == 0) continue;
    remarks.push_back({RemarkKind::kWarning, fmt::format("left-out-{}", item.code),
                       fmt::format("{} {}", item.count, item.count == 1 ? item.one : item.many),
                       item.count});
  }
  return remarks;
}

void LeftOut::AddSummary(ImportRemarks& remarks) const {
  std::string list;
  std::uint64_t count = 0;
  for (const ImportRemark& item : Items()) {
    list += (list.empty() ? "" : ", ") + item.text;
    count = AddCounts(count, item.count);
  }
  if (!list.empty()) {
    remarks.push_back({RemarkKind::kWarning, "left-out", "left out: " + list, count});
  }
}

}  // namespace mapexport
