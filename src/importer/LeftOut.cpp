// What of a foreign scene the host's scene can't hold.
#include "importer/LeftOut.h"

#include <string_view>

#include <fmt/format.h>

namespace mapexport {

std::string LeftOut::Summary() const {
  struct Item {
    std::size_t count;
    std::string_view one;
    std::string_view many;
  };
  const Item items[] = {
      {points, "point", "points"},
      {lines, "line", "lines"},
      {polygons, "polygon that can't be triangulated", "polygons that can't be triangulated"},
      {vertices, "vertex that isn't finite", "vertices that aren't finite"},
      {faces, "triangle with such a corner or a missing one",
       "triangles with such a corner or a missing one"},
      {textureCorners, "texture coordinate that isn't finite",
       "texture coordinates that aren't finite"},
      {transforms, "node transform that isn't finite", "node transforms that aren't finite"},
      {meshes, "mesh that isn't in the file", "meshes that aren't in the file"},
      {bones, "bone", "bones"},
      {cameras, "camera", "cameras"},
      {lights, "light", "lights"}};
  std::string list;
  for (const Item& item : items) {
    if (item.count == 0) continue;
    list += fmt::format("{}{} {}", list.empty() ? "" : ", ", item.count,
                        item.count == 1 ? item.one : item.many);
  }
  return list.empty() ? list : "left out: " + list;
}

}  // namespace mapexport
