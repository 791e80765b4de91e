#include "compare/TriangleMarks.h"

#include <algorithm>
#include <tuple>

namespace mapexport {
namespace {

auto MarkKey(const ModelTriangle& triangle) {
  return std::tuple(triangle.content, triangle.material, triangle.set);
}

std::vector<std::uint8_t>& MarksFor(const ModelTriangle& triangle, Both<TriangleMarks>& marks) {
  TriangleMarks& own = marks[triangle.model];
  return triangle.material == kUndrawn ? own.undrawn : own.drawn;
}

}  // namespace

Both<TriangleMarks> MarkTriangles(std::vector<ModelTriangle> triangles) {
  std::ranges::sort(triangles, {}, [](const ModelTriangle& each) {
    return std::tuple_cat(MarkKey(each), std::tuple(each.model, each.index));
  });
  Both<TriangleMarks> marks;
  for (const ModelTriangle& triangle : triangles) {
    std::vector<std::uint8_t>& own = MarksFor(triangle, marks);
    own.resize(std::max<std::size_t>(own.size(), std::size_t{triangle.index} + 1));
  }
  for (auto first = triangles.begin(); first != triangles.end();) {
    const auto end = std::find_if(
        first, triangles.end(), [&](const auto& each) { return MarkKey(each) != MarkKey(*first); });
    const auto second = std::find_if(first, end, [](const auto& each) { return each.model == 1; });
    const auto equal = std::min(second - first, end - second);
    for (auto each = first + equal; each < second; ++each) MarksFor(*each, marks)[each->index] = 1;
    for (auto each = second + equal; each < end; ++each) MarksFor(*each, marks)[each->index] = 1;
    first = end;
  }
  return marks;
}

}  // namespace mapexport
