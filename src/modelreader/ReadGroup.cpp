#include "modelreader/ReadGroup.h"

#include <string_view>

#include <fmt/format.h>

#include "modelreader/CheckFaceTable.h"
#include "modelreader/LittleEndian.h"
#include "modelreader/ModelFaceFlags.h"
#include "modelreader/PrintableText.h"
#include "modelreader/ReadBatch.h"
#include "modelreader/ReadLists.h"
#include "modelreader/SizedRecord.h"

namespace mapexport {

namespace {

constexpr std::uint32_t kQobTypeCode = 3;
constexpr std::uint32_t kKobTypeCode = 35;
constexpr std::uint32_t kGroupVersion = 2;

/// Size field, type code, "Version", version, empty name.
constexpr std::uint64_t kLeastHeaderBytes = 4 + 4 + 12 + 4 + 5;
/// Header, vertex count, batch count.
constexpr std::uint64_t kLeastQobBytes = kLeastHeaderBytes + 4 + 4;
/// Header, record inside, counts of points, planes, faces and surface sets.
constexpr std::uint64_t kLeastKobBytes = kLeastHeaderBytes + kLeastQobBytes + 4 * 4;
/// Empty name, flags, face count.
constexpr std::uint64_t kLeastSetBytes = 5 + 4 + 4;

/// Reads one group; in the layout kKob it remembers where the lists stand.
class GroupReader {
 public:
  GroupReader(ByteReader& in, ModelLayout layout, std::optional<std::uint32_t> materialCount,
              const Place& place, ModelGroup& group)
      : in_(in), place_(place), group_(group) {
    around_.materialCount = materialCount;
    around_.facesAreIndexed = layout == ModelLayout::kKob;
  }

  /// The record of a group of the layout kQob.
  void ReadQobRecord(const std::function<bool(std::uint64_t)>& isNext) {
    ReadSizedRecord(
        in_, place_,
        [&] {
          CheckLayout(kKobTypeCode, "kob", "qob", place_);
          ReadQobHeader();
        },
        [&] { ReadQobBody(); }, isNext);
  }

  /// The record of a group of the layout kKob.
  void ReadKobRecord(const std::function<bool(std::uint64_t)>& isNext) {
    const Place outer(place_, "outer");
    std::uint64_t headerOffset = 0;
    ReadSizedRecord(
        in_, outer,
        [&] {
          headerOffset = in_.Offset();
          CheckLayout(kQobTypeCode, "qob", "kob", outer);
          group_.outerHeader = ReadHeader(in_, outer, kKobTypeCode, kGroupVersion);
        },
        [&] {
          // Nothing that can be told from other bytes follows the record inside.
          const auto isNextInside = [](std::uint64_t) { return false; };
          ReadSizedRecord(
              in_, place_, [&] { ReadQobHeader(); }, [&] { ReadQobBody(); }, isNextInside);
          CheckOuterName(Place(outer, "name"), headerOffset);
          ReadKobLists();
        },
        isNext);
  }

 private:
  /// A group of the other layout can't be read, and is told as that.
  void CheckLayout(std::uint32_t otherTypeCode, std::string_view other, std::string_view layout,
                   const Place& place) {
    if (!in_.StandsAt(in_.Offset(), otherTypeCode)) return;
    in_.Problems().Add(ModelProblemCode::kOtherLayout, in_.Offset(), Place(place, "typeCode"),
                       otherTypeCode, other, layout);
    throw Unreadable{};
  }

  void ReadQobHeader() { group_.header = ReadHeader(in_, place_, kQobTypeCode, kGroupVersion); }

  void ReadQobBody() {
    group_.vertices = ReadPoints(in_, Place(place_, "vertices"));
    around_.vertexCount = group_.vertices.size();
    const Place batches(place_, "batches");
    const std::uint32_t count = in_.Count(kLeastBatchBytes, batches);
    for (std::uint32_t i = 0; i < count; ++i) {
      offsets_.batches.push_back(in_.Offset());
      ReadBatch(in_, around_, batches.At(i), group_.batches.emplace_back());
    }
  }

  void CheckOuterName(const Place& namePlace, std::uint64_t headerOffset) {
    if (group_.outerHeader.name == group_.header.name) return;
    constexpr std::uint64_t kBytesBeforeName = 4 + 12 + 4;
    in_.Problems().Add(ModelProblemCode::kOuterName, headerOffset + kBytesBeforeName, namePlace,
                       Quoted(group_.outerHeader.name), Quoted(group_.header.name));
  }

  void ReadKobLists() {
    group_.collisionPoints = ReadPoints(in_, Place(place_, "collisionPoints"));
    offsets_.planes = in_.Offset();
    group_.planes = ReadPlanes(in_, Place(place_, "planes"));
    ReadFaces(Place(place_, "faces"));
    ReadSurfaceSets(Place(place_, "surfaceSets"));
    CheckFaceTable(group_, offsets_, place_, in_.Problems());
  }

  void ReadFaces(const Place& list) {
    group_.faces.resize(ReadIndexedCount(in_, kTableEntryBytes, list));
    offsets_.faces = in_.Offset();
    const std::byte* bytes = in_.Bytes(group_.faces.size() * kTableEntryBytes, list).data();
    for (ModelFace& face : group_.faces) {
      face.vertices = TripleAt(bytes);
      face.position = U16At(bytes + 6);
      face.surfaceSet = U32At(bytes + 8);
      face.batch = static_cast<std::int32_t>(U32At(bytes + 12));
      bytes += kTableEntryBytes;
    }
  }

  std::uint32_t ReadFlags(const Place& place) {
    const std::uint32_t flags = in_.U32(place);
    if ((flags & ~kAllModelFaceFlags) != 0) {
      in_.Problems().Add(ModelProblemCode::kSetFlags, in_.Offset() - 4, place,
                         fmt::format("{:#x}", flags), fmt::format("{:#x}", kAllModelFaceFlags));
    }
    return flags;
  }

  void ReadSurfaceSets(const Place& list) {
    const std::uint32_t count = in_.Count(kLeastSetBytes, list);
    for (std::uint32_t i = 0; i < count; ++i) {
      const Place place = list.At(i);
      ModelSurfaceSet& set = group_.surfaceSets.emplace_back();
      set.name = in_.Text(Place(place, "name"));
      set.flags = ReadFlags(Place(place, "flags"));
      const Place facesPlace(place, "faces");
      set.faces.resize(in_.Count(2, facesPlace));
      offsets_.sets.push_back(in_.Offset());
      const std::byte* bytes = in_.Bytes(set.faces.size() * 2, facesPlace).data();
      for (std::size_t k = 0; k < set.faces.size(); ++k) set.faces[k] = U16At(bytes + 2 * k);
    }
  }

  ByteReader& in_;
  const Place& place_;
  ModelGroup& group_;
  BatchSurroundings around_;
  GroupOffsets offsets_;
};

}  // namespace

std::uint32_t GroupTypeCode(ModelLayout layout) {
  return layout == ModelLayout::kQob ? kQobTypeCode : kKobTypeCode;
}

std::uint64_t LeastGroupBytes(ModelLayout layout) {
  return layout == ModelLayout::kQob ? kLeastQobBytes : kLeastKobBytes;
}

void ReadGroup(ByteReader& in, ModelLayout layout, std::optional<std::uint32_t> materialCount,
               const Place& place, const std::function<bool(std::uint64_t offset)>& isNext,
               ModelGroup& group) {
  GroupReader reader(in, layout, materialCount, place, group);
  if (layout == ModelLayout::kQob) {
    reader.ReadQobRecord(isNext);
  } else {
    reader.ReadKobRecord(isNext);
  }
}

}  // namespace mapexport
