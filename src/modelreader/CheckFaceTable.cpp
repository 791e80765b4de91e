#include "modelreader/CheckFaceTable.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>
#include <mapexport/ModelReader.h>

namespace mapexport {

namespace {

std::string Shown(const std::array<std::uint16_t, 3>& triple) {
  return fmt::format("{}, {}, {}", triple[0], triple[1], triple[2]);
}

/// Which places in the batches' face lists are taken by faces of the table. A 16-bit position means
/// every place of a long list with these low bits, so it can be taken that many times.
class BatchPlaces {
 public:
  explicit BatchPlaces(const std::vector<reader::List<reader::Triple>>& batches)
      : batches_(batches) {
    std::uint64_t sum = 0;
    starts_.reserve(batches.size());
    for (const auto& faces : batches) {
      starts_.push_back(sum);
      sum += std::min<std::uint64_t>(faces.size(), kModelIndexLimit);
    }
    taken_.resize(sum);
    facesTaken_.resize(batches.size());
  }

  /// Takes a place of `batch` at `position`, which is below its face count. False when none is
  /// left.
  bool Take(std::size_t batch, std::uint16_t position) {
    const std::uint64_t last = batches_[batch].size() - 1;
    const std::uint64_t places = (last - position) / kModelIndexLimit + 1;
    std::uint16_t& taken = taken_[starts_[batch] + position];
    if (taken == places) return false;
    ++taken;
    ++facesTaken_[batch];
    return true;
  }

  std::uint32_t FacesTaken(std::size_t batch) const { return facesTaken_[batch]; }

 private:
  const std::vector<reader::List<reader::Triple>>& batches_;
  std::vector<std::uint64_t> starts_;  ///< of each batch's positions in taken_
  std::vector<std::uint16_t> taken_;   ///< a batch has far fewer than 2^32 faces, so this suffices
  std::vector<std::uint32_t> facesTaken_;
};

class FaceTableCheck {
 public:
  FaceTableCheck(const GroupLists& parts, const Place& place, ProblemList& problems)
      : parts_(parts),
        group_(parts.group),
        place_(place),
        facesPlace_(place, "faces"),
        batchesPlace_(place, "batches"),
        setsPlace_(place, "surfaceSets"),
        problems_(problems),
        places_(parts.batches) {}

  void Run() {
    const std::uint64_t errorsBefore = problems_.Errors();
    for (std::size_t i = 0; i < group_.faces.size(); ++i) CheckFace(i);
    // Once a single face is wrong, wrong totals say nothing new.
    if (problems_.Errors() == errorsBefore) CheckTotals();
    CheckSets();
  }

 private:
  // The fields of entry i, at their offsets.
  enum Field : std::uint64_t { kVertices = 0, kPosition = 6, kSurfaceSet = 8, kBatch = 12 };

  template <typename... Values>
  void AddToFace(ModelProblemCode code, std::size_t i, Field field, std::string_view name,
                 const Values&... values) {
    const Place face = facesPlace_.At(i);
    problems_.Add(code, parts_.facesOffset + i * kTableEntryBytes + field, Place(face, name),
                  values...);
  }

  void CheckFace(std::size_t i) {
    const ModelFace face = group_.faces[i];
    if (face.batch == -1) {
      CheckUndrawn(i, face);
    } else if (face.batch < 0 || static_cast<std::size_t>(face.batch) >= parts_.batches.size()) {
      AddToFace(ModelFault::kBatchIndex, i, kBatch, "batch", face.batch, parts_.batches.size());
    } else {
      CheckDrawn(i, face);
    }

    if (face.surfaceSet >= parts_.surfaceSets.size()) {
      AddToFace(ModelFault::kSurfaceSetIndex, i, kSurfaceSet, "surfaceSet", face.surfaceSet,
                parts_.surfaceSets.size());
      return;
    }
    const std::uint32_t flags = parts_.surfaceSets[face.surfaceSet].flags;
    const bool notRendered = (flags & reader::kNotRendered) != 0;
    if (face.batch == -1 && !notRendered) {
      AddToFace(ModelFault::kUndrawnSet, i, kBatch, "batch", face.surfaceSet,
                fmt::format("{:#04x}", flags));
    } else if (face.batch != -1 && notRendered) {
      AddToFace(ModelFault::kDrawnSet, i, kBatch, "batch", face.batch, face.surfaceSet);
    }
  }

  void CheckUndrawn(std::size_t i, const ModelFace& face) {
    const auto position = static_cast<std::uint16_t>(undrawn_++);
    if (face.position != position) {
      AddToFace(ModelFault::kPlanePosition, i, kPosition, "position", face.position, position);
    }
    const std::size_t points = group_.collisionPoints.size();
    for (std::size_t k = 0; k < face.vertices.size(); ++k) {
      if (face.vertices[k] < points) continue;
      AddToFace(ModelFault::kPointIndex, i, kVertices, "vertices", k, face.vertices[k], points);
    }
  }

  void CheckDrawn(std::size_t i, const ModelFace& face) {
    const auto batch = static_cast<std::size_t>(face.batch);
    const reader::List<reader::Triple>& faces = parts_.batches[batch];
    if (face.position >= faces.size()) {
      AddToFace(ModelFault::kBatchPosition, i, kPosition, "position", face.position, batch,
                faces.size());
      return;
    }
    if (!places_.Take(batch, face.position)) {
      AddToFace(ModelFault::kPositionTaken, i, kPosition, "position", face.position, batch);
      return;
    }
    const bool positionIsWhole = faces.size() <= kModelIndexLimit;
    const reader::Triple vertices = faces[face.position];
    if (positionIsWhole && face.vertices != vertices) {
      AddToFace(ModelFault::kFaceVertices, i, kVertices, "vertices", Shown(face.vertices), batch,
                Shown(vertices));
    }
  }

  void CheckTotals() {
    if (group_.planes.size() != undrawn_) {
      problems_.Add(ModelFault::kPlaneCount, parts_.planesOffset, Place(place_, "planes"),
                    group_.planes.size(), undrawn_);
    }
    for (std::size_t i = 0; i < parts_.batches.size(); ++i) {
      const std::size_t faces = parts_.batches[i].size();
      if (places_.FacesTaken(i) == faces) continue;
      const Place batch = batchesPlace_.At(i);
      problems_.Add(ModelFault::kFacesMissing, parts_.batchOffsets[i], Place(batch, "faces"), faces,
                    places_.FacesTaken(i));
    }
  }

  /// Compares the faces that name a surface set with those that the set lists, by their low 16
  /// bits.
  void CheckSets() {
    const std::size_t setCount = parts_.surfaceSets.size();
    std::vector<std::uint32_t> starts(setCount + 1);  // of each set's faces in `bySet`
    for (const ModelFace face : group_.faces) {
      if (face.surfaceSet < setCount) ++starts[face.surfaceSet + 1];
    }
    for (std::size_t s = 0; s < setCount; ++s) starts[s + 1] += starts[s];
    std::vector<std::uint32_t> bySet(starts.back());
    std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
    for (std::size_t i = 0; i < group_.faces.size(); ++i) {
      const std::uint32_t set = group_.faces[i].surfaceSet;
      if (set < setCount) bySet[next[set]++] = static_cast<std::uint32_t>(i);
    }

    // Faces of the current set, by their low 16 bits.
    std::vector<std::uint32_t> unlisted(
        std::min<std::uint64_t>(group_.faces.size(), kModelIndexLimit));
    for (std::size_t s = 0; s < setCount; ++s) {
      CheckSet(s, std::span(bySet).subspan(starts[s], starts[s + 1] - starts[s]), unlisted);
    }
  }

  /// `faces` are those that name set s, ascending; `unlisted` is all 0 before and after.
  void CheckSet(std::size_t s, std::span<const std::uint32_t> faces,
                std::vector<std::uint32_t>& unlisted) {
    for (const std::uint32_t face : faces) ++unlisted[face % kModelIndexLimit];
    const Place set = setsPlace_.At(s);
    const Place list(set, "faces");
    const reader::List<std::uint16_t>& listed = parts_.surfaceSets[s].faces;
    for (std::size_t k = 0; k < listed.size(); ++k) {
      if (listed[k] < unlisted.size() && unlisted[listed[k]] > 0) {
        --unlisted[listed[k]];
      } else {
        AddToSetEntry(s, k, list);
      }
    }
    for (const std::uint32_t face : faces) {
      if (unlisted[face % kModelIndexLimit] > 0) {
        AddToFace(ModelFault::kNotInSet, face, kSurfaceSet, "surfaceSet", s);
      }
      unlisted[face % kModelIndexLimit] = 0;
    }
  }

  /// Reports entry k of set s, which is a face that does not name the set, or one too many.
  void AddToSetEntry(std::size_t s, std::size_t k, const Place& list) {
    const std::uint16_t face = parts_.surfaceSets[s].faces[k];
    const std::uint64_t offset = parts_.setOffsets[s] + 2 * k;
    if (face >= group_.faces.size()) {
      problems_.Add(ModelFault::kFaceIndex, offset, list.At(k), face, group_.faces.size());
    } else if (group_.faces.size() <= kModelIndexLimit && group_.faces[face].surfaceSet != s) {
      problems_.Add(ModelFault::kInOtherSet, offset, list.At(k), face,
                    group_.faces[face].surfaceSet);
    } else {
      problems_.Add(ModelFault::kListedAgain, offset, list.At(k), face);
    }
  }

  const GroupLists& parts_;
  const reader::Group& group_;
  const Place& place_;
  const Place facesPlace_;
  const Place batchesPlace_;
  const Place setsPlace_;
  ProblemList& problems_;
  BatchPlaces places_;
  std::uint64_t undrawn_ = 0;
};

}  // namespace

void CheckFaceTable(const GroupLists& parts, const Place& place, ProblemList& problems) {
  FaceTableCheck(parts, place, problems).Run();
}

}  // namespace mapexport
