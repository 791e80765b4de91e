// Reads the lists of meshes where a scene file has them in binary.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/Mesh.h"
#include "scene/BinarySceneFile.h"
#include "scene/CheckMesh.h"
#include "scene/JsonValue.h"

namespace mapexport {

/// Reads meshes whose lists are objects of "offset", in bytes from the start of the lists, and
/// "count". Two meshes with the same five lists are one that is shared; otherwise no two lists may
/// have a byte in common.
class BinaryLists {
 public:
  /// `file` must outlive this object. The lists of all meshes together, where each use of a shared
  /// mesh counts (but its corner normals only once), may have `mostBytes`.
  BinaryLists(const BinarySceneFile& file, std::uint64_t mostBytes)
      : file_(file), mostBytes_(mostBytes), bytesLeft_(mostBytes) {}

  /// The mesh that `value` describes, checked. Throws SceneError. Takes logarithmic time beside
  /// what reading the lists takes.
  FileMesh ReadMesh(JsonValue& value);

 private:
  struct Range {
    std::uint64_t offset = 0;
    std::uint64_t count = 0;
    bool isGiven = false;

    friend bool operator<(const Range& a, const Range& b) {
      return std::tie(a.offset, a.count, a.isGiven) < std::tie(b.offset, b.count, b.isGiven);
    }
  };
  using Ranges = std::array<Range, 5>;

  static Range ReadRange(JsonValue& value);
  /// Throws when the meshes so far have too many bytes. `isNew`: no mesh before had these ranges.
  void Count(const JsonValue& value, const Ranges& ranges, bool isNew);
  FileMesh ReadNew(const JsonValue& value, const Ranges& ranges);
  std::vector<Point3> ReadPoints(const JsonValue& mesh, std::string_view name, const Range& range);
  template <class Element>
  std::vector<Element> ReadList(const JsonDocument& document, const JsonPlace& place,
                                const Range& range);
  /// Throws when the bytes are not those of a list alone.
  void Take(const JsonDocument& document, const JsonPlace& place, std::uint64_t begin,
            std::uint64_t end);

  const BinarySceneFile& file_;
  std::uint64_t mostBytes_;
  std::uint64_t bytesLeft_;
  std::map<Ranges, FileMesh> meshes_;
  std::map<std::uint64_t, std::uint64_t> taken_;  ///< the bytes of each list: begin, end
};

}  // namespace mapexport
