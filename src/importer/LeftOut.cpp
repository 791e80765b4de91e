// What of a foreign scene the host's scene can't hold.
#include "importer/LeftOut.h"

#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace mapexport {

Remarks LeftOut::Items() const {
  struct Item {
    std::size_t count;
    RemarkCode code;
    std::string_view one;
    std::string_view many;
  };
  const Item items[] = {
      {points, "left-out-points", "point", "points"},
      {lines, "left-out-lines", "line", "lines"},
      {curves, "left-out-curves", "curve or curved surface", "curves or curved surfaces"},
      {objects, "left-out-objects", "object of an unknown kind", "objects of unknown kinds"},
      {polygons, "left-out-polygons", "polygon that can't be triangulated",
       "polygons that can't be triangulated"},
      {primitives, "left-out-primitives", "part of a mesh without positions",
       "parts of meshes without positions"},
      {corners, "left-out-corners", "corner of a polygon that can't be triangulated as a whole",
       "corners of polygons that can't be triangulated as a whole"},
      {vertices, "left-out-vertices", "vertex that isn't finite", "vertices that aren't finite"},
      {faces, "left-out-triangles", "triangle with a corner that is missing or not finite",
       "triangles with a corner that is missing or not finite"},
      {textureCorners, "left-out-texture-coordinates", "texture coordinate that isn't finite",
       "texture coordinates that aren't finite"},
      {creases, "left-out-creases", "hard edge within a smooth surface",
       "hard edges within smooth surfaces"},
      {transforms, "left-out-transforms", "node transform that isn't finite",
       "node transforms that aren't finite"},
      {meshes, "left-out-meshes", "mesh that isn't in the file", "meshes that aren't in the file"},
      {colours, "left-out-colours", "vertex colour", "vertex colours"},
      {channels, "left-out-channels", "mesh's second texture channel",
       "meshes' second texture channels"},
      {attributes, "left-out-attributes", "vertex attribute that isn't as long as the positions",
       "vertex attributes that aren't as long as the positions"},
      {materials, "left-out-materials", "material without effect", "materials without effect"},
      {variants, "left-out-variants", "variant of the materials", "variants of the materials"},
      {morphs, "left-out-morphs", "morph target", "morph targets"},
      {hidden, "left-out-hidden", "hidden node", "hidden nodes"},
      {scenes, "left-out-scenes", "further scene", "further scenes"},
      {skins, "left-out-skins", "skin that can't be posed", "skins that can't be posed"},
      {bones, "left-out-bones", "bone", "bones"},
      {animations, "left-out-animations", "animation", "animations"},
      {cameras, "left-out-cameras", "camera", "cameras"},
      {lights, "left-out-lights", "light", "lights"}};
  Remarks remarks;
  for (const Item& item : items) {
    if (item.count == 0) continue;
    remarks.push_back(MakeWarning(
        item.code, fmt::format("{} {}", item.count, item.count == 1 ? item.one : item.many),
        item.count));
  }
  return remarks;
}

void LeftOut::AddSummary(Remarks& remarks) const {
  std::string list;
  std::uint64_t count = 0;
  for (const Remark& item : Items()) {
    list += (list.empty() ? "" : ", ") + item.text;
    count = AddCounts(count, item.count);
  }
  if (!list.empty()) {
    remarks.push_back(MakeWarning("left-out", "left out: " + list, count));
  }
}

}  // namespace mapexport
