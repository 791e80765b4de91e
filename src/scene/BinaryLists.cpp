#include "scene/BinaryLists.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "system/IsFinite.h"

namespace mapexport {
namespace {

constexpr std::size_t kWord = sizeof(std::uint32_t);

// The members of a mesh, in the order of its ranges, and the bytes of an entry of each.
enum : std::size_t { kVertices, kFaces, kTextureVertices, kTextureFaces, kCornerNormals };
constexpr const char* kNames[] = {"vertices", "faces", "textureVertices", "textureFaces",
                                  "cornerNormals"};
constexpr std::uint64_t kEntryBytes[] = {sizeof(Point3), sizeof(Face), sizeof(Point3),
                                         sizeof(TVFace), sizeof(Point3)};
static_assert(sizeof(Point3) == 3 * kWord && sizeof(Face) == 5 * kWord &&
              sizeof(TVFace) == 3 * kWord);

}  // namespace

FileMesh BinaryLists::ReadMesh(JsonValue& value) {
  Ranges ranges;
  const auto member = [&ranges](std::size_t which) {
    return JsonMember{kNames[which],
                      [&ranges, which](JsonValue& v) { ranges[which] = ReadRange(v); }};
  };
  value.ReadObject(member(kVertices), member(kFaces), member(kTextureVertices),
                   member(kTextureFaces), member(kCornerNormals));
  const auto [entry, isNew] = meshes_.try_emplace(ranges);
  Count(value, ranges, isNew);
  if (isNew) entry->second = ReadNew(value, ranges);
  return entry->second;
}

void BinaryLists::Count(const JsonValue& value, const Ranges& ranges, bool isNew) {
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    if (i == kCornerNormals && !isNew) continue;  // they end up in the smoothing groups
    // One that reaches beyond the lists is refused later; only its product must not overflow.
    const std::uint64_t mostEntries = file_.ListBytes() / kEntryBytes[i] + 1;
    const std::uint64_t bytes = std::min(ranges[i].count, mostEntries) * kEntryBytes[i];
    if (bytes > bytesLeft_) {
      value.Fail(
          fmt::format("is too much: the meshes of all nodes may have {} bytes together, "
                      "where a mesh counts for each node that uses it",
                      mostBytes_));
    }
    bytesLeft_ -= bytes;
  }
}

BinaryLists::Range BinaryLists::ReadRange(JsonValue& value) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  Range range{.isGiven = true};
  bool hasOffset = false;
  bool hasCount = false;
  const auto read = [](std::uint64_t& number, bool& has) {
    return [&](JsonValue& v) {
      number = static_cast<std::uint64_t>(v.ReadInteger(0, kMost));
      has = true;
    };
  };
  value.ReadObject(JsonMember{"offset", read(range.offset, hasOffset)},
                   JsonMember{"count", read(range.count, hasCount)});
  if (!hasOffset) value.Fail("needs \"offset\"");
  if (!hasCount) value.Fail("needs \"count\"");
  return range;
}

FileMesh BinaryLists::ReadNew(const JsonValue& value, const Ranges& ranges) {
  JsonDocument& document = value.Document();
  Mesh mesh;
  mesh.verts = ReadPoints(value, kNames[kVertices], ranges[kVertices]);
  const JsonPlace facesPlace(value.Place(), kNames[kFaces]);
  mesh.faces = ReadList<Face>(document, facesPlace, ranges[kFaces]);
  for (Face& face : mesh.faces) {
    const std::uint32_t id = face.flags;  // of the material
    if (id > 0xFFFF) {
      document.Fail(JsonPlace(facesPlace, static_cast<std::size_t>(&face - mesh.faces.data())),
                    fmt::format("material id {} must be 0 to 65535", id));
    }
    face.flags = 0;
    face.SetMatID(static_cast<std::uint16_t>(id));
  }
  mesh.tVerts = ReadPoints(value, kNames[kTextureVertices], ranges[kTextureVertices]);
  const JsonPlace texturePlace(value.Place(), kNames[kTextureFaces]);
  mesh.tvFace = ReadList<TVFace>(document, texturePlace, ranges[kTextureFaces]);
  const std::vector<Point3> cornerNormals =
      ReadPoints(value, kNames[kCornerNormals], ranges[kCornerNormals]);
  return FinishMesh(value, std::move(mesh), ranges[kTextureFaces].isGiven, cornerNormals);
}

std::vector<Point3> BinaryLists::ReadPoints(const JsonValue& mesh, std::string_view name,
                                            const Range& range) {
  const JsonPlace place(mesh.Place(), name);
  std::vector<Point3> points = ReadList<Point3>(mesh.Document(), place, range);
  const auto wrong = std::ranges::find_if_not(points, IsFinite<Point3>);
  if (wrong != points.end()) {
    mesh.Document().Fail(JsonPlace(place, static_cast<std::size_t>(wrong - points.begin())),
                         "is not finite");
  }
  return points;
}

template <class Element>
std::vector<Element> BinaryLists::ReadList(const JsonDocument& document, const JsonPlace& place,
                                           const Range& range) {
  if (range.offset % kWord != 0) {
    document.Fail(place, fmt::format("offset {} is no multiple of {}", range.offset, kWord));
  }
  const std::uint64_t most = file_.ListBytes();
  if (range.offset > most || range.count > (most - range.offset) / sizeof(Element)) {
    document.Fail(place,
                  fmt::format("{} entries of {} bytes from byte {} on reach beyond the lists, "
                              "which have {} bytes",
                              range.count, sizeof(Element), range.offset, most));
  }
  Take(document, place, range.offset, range.offset + range.count * sizeof(Element));
  std::vector<Element> list(range.count);
  // The elements are structures of words.
  file_.Read(range.offset, {reinterpret_cast<std::uint32_t*>(list.data()),
                            list.size() * (sizeof(Element) / kWord)});
  return list;
}

void BinaryLists::Take(const JsonDocument& document, const JsonPlace& place, std::uint64_t begin,
                       std::uint64_t end) {
  if (begin == end) return;
  const auto next = taken_.lower_bound(begin);
  const bool overlaps = (next != taken_.end() && next->first < end) ||
                        (next != taken_.begin() && std::prev(next)->second > begin);
  if (overlaps) {
    document.Fail(place, fmt::format("bytes {} to {} are in another list, too", begin, end));
  }
  taken_.emplace_hint(next, begin, end);
}

}  // namespace mapexport
