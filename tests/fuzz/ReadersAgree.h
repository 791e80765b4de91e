// The strict reader and the engines' reader on one model file.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <mapexport/ModelReader.h>

#include "fuzz/FuzzBytes.h"
#include "modelreader/ReadModelFile.h"

namespace mapexport {

/// All values of a model, whichever of the readers it is from, in file order.
class ModelWords {
 public:
  template <class Model>
  explicit ModelWords(const Model& model) {
    for (const auto& material : model.materials) {
      Add(material.header, material.textureName, material.scalar1, material.scalar2,
          material.scalar3, material.modeValue, material.ambient, material.diffuse,
          material.specular, std::uint32_t{material.twoSided});
    }
    for (const auto& group : model.groups) {
      Add(group.header, group.outerHeader, group.vertices, group.collisionPoints, group.planes,
          group.faces);
      for (const auto& batch : group.batches) Add(batch);
      for (const auto& set : group.surfaceSets) Add(set.name, set.flags, set.faces);
    }
  }

  friend bool operator==(const ModelWords&, const ModelWords&) = default;

 private:
  template <class... Values>
  requires(sizeof...(Values) > 1) void Add(const Values&... values) { (Add(values), ...); }
  void Add(std::uint32_t value) { words_.push_back(value); }
  void Add(std::int32_t value) { Add(std::bit_cast<std::uint32_t>(value)); }
  void Add(float value) { Add(std::bit_cast<std::uint32_t>(value)); }
  void Add(std::uint16_t value) { Add(std::uint32_t{value}); }
  void Add(std::string_view text) {
    Add(static_cast<std::uint32_t>(text.size()));
    for (const char c : text) Add(static_cast<std::uint32_t>(c));
  }
  void Add(const std::string& text) { Add(std::string_view(text)); }
  void Add(const ModelPoint& p) { Add(p.x, p.y, p.z); }
  void Add(const ModelPlane& plane) { Add(plane.normal, plane.d); }
  void Add(const ModelColour& c) { Add(c.r, c.g, c.b, c.a); }
  void Add(const reader::Triple& t) { Add(t[0], t[1], t[2]); }
  void Add(const ModelFace& face) {
    Add(face.vertices, face.position, face.surfaceSet, face.batch);
  }
  void Add(const reader::TextureCoordinates& uv) { Add(uv.u, uv.v); }
  void Add(const reader::Header& header) { Add(header.typeCode, header.version, header.name); }
  void Add(const ModelHeader& header) { Add(header.typeCode, header.version, header.name); }
  template <class T>
  requires requires(const T& list) { list.begin(), list.size(), list.data(); }
  void Add(const T& list) {
    Add(static_cast<std::uint32_t>(list.size()));
    for (const auto& entry : list) Add(entry);
  }
  void Add(const reader::Batch& batch) {
    Add(batch.material, batch.planes, batch.vertexIndices, batch.cornerIndices, batch.normals,
        batch.textureCoordinates, batch.colours);
  }
  void Add(const ModelBatch& batch) {
    const auto column = [this](const auto& rows, const auto& value) {
      Add(static_cast<std::uint32_t>(rows.size()));
      for (const auto& row : rows) Add(value(row));
    };
    Add(batch.material);
    column(batch.faces, [](const auto& face) { return face.plane; });
    column(batch.faces, [](const auto& face) { return face.vertices; });
    column(batch.faces, [](const auto& face) { return face.corners; });
    column(batch.corners, [](const auto& corner) { return corner.normal; });
    column(batch.corners, [](const auto& corner) {
      return reader::TextureCoordinates{corner.u, corner.v};
    });
    column(batch.corners, [](const auto& corner) { return corner.colour; });
  }

  std::vector<std::uint32_t> words_;
};

/// What is wrong between the lists of a group, which engines are left to do without.
constexpr std::array<ModelProblemCode, 12> kForTheStrictAlone{
    ModelFault::kPlaneCount,    ModelFault::kPlanePosition, ModelFault::kBatchPosition,
    ModelFault::kPositionTaken, ModelFault::kFaceVertices,  ModelFault::kFacesMissing,
    ModelFault::kUndrawnSet,    ModelFault::kDrawnSet,      ModelFault::kNotInSet,
    ModelFault::kInOtherSet,    ModelFault::kListedAgain,   ModelFault::kTooManyErrors};

/// Reads the bytes with both: what is sound for the one opens in the other, with the same values;
/// what opens has no fault but those of the list.
inline ModelReadResult RequireReadersAgree(std::span<const std::byte> bytes, ModelLayout layout) {
  ModelReadResult read = ReadModelBytes(bytes, layout);
  reader::Model model;
  const bool opened = model.Open(bytes.data(), bytes.size(), layout);
  Require(opened || !read.Sound(), "what is sound opens in engines");
  for (const ModelProblem& problem : read.problems) {
    Require(!opened || problem.severity == ModelSeverity::kWarning ||
                std::ranges::find(kForTheStrictAlone, problem.code) != kForTheStrictAlone.end(),
            "engines open nothing with " + ToLine(problem));
  }
  // Of a damaged file the strict reader may keep more or less; going through it must be safe.
  const ModelWords words(model);
  Require(!read.Sound() || words == ModelWords(read.model), "the readers agree on the values");
  return read;
}

}  // namespace mapexport
