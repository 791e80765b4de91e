#include "support/ModelFiles.h"

#include <bit>
#include <initializer_list>
#include <utility>

namespace mapexport {

namespace {

class FileBuilder {
 public:
  explicit FileBuilder(const ModelFile& model) {
    Text("BeginModel", "startTag");
    Chunk(8, "MaterialList", "materialChunk",
          [&] { List("materials", model.materials, &FileBuilder::Material); });
    const bool isQob = model.layout == ModelLayout::kQob;
    Chunk(7, "GeometryList", "geometryChunk", [&] {
      List("groups", model.groups, isQob ? &FileBuilder::QobRecord : &FileBuilder::KobRecord);
    });
    Text("EndModel", "endTag");
  }
  FileBytes Take() { return std::move(file_); }

 private:
  void Mark(const std::string& place) { file_.offsets[place] = file_.bytes.size(); }
  void Number(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) file_.bytes.push_back(std::byte(value >> (8 * i)));
  }
  void U32(std::uint64_t value, const std::string& place) {
    Mark(place);
    Number(value, 4);
  }
  void Floats(std::initializer_list<float> values) {
    for (const float value : values) Number(std::bit_cast<std::uint32_t>(value), 4);
  }
  void Text(const std::string& text, const std::string& place) {
    U32(text.size() + 1, place);
    for (const char c : text) Number(static_cast<unsigned char>(c), 1);
    Number(0, 1);
  }
  void Point(const ModelPoint& p, const std::string&) { Floats({p.x, p.y, p.z}); }
  void Plane(const ModelPlane& plane, const std::string& place) {
    Point(plane.normal, place);
    Floats({plane.d});
  }
  void Colour(const ModelColour& c) { Floats({c.r, c.g, c.b, c.a}); }
  void Index(const std::uint16_t& index, const std::string&) { Number(index, 2); }
  void Triple(const reader::Triple& triple) {
    for (const std::uint16_t index : triple) Number(index, 2);
  }
  template <class T>
  void List(const std::string& place, const std::vector<T>& list,
            void (FileBuilder::*write)(const T&, const std::string&)) {
    U32(list.size(), place);
    for (std::size_t i = 0; i < list.size(); ++i) {
      (this->*write)(list[i], place + '[' + std::to_string(i) + ']');
    }
  }

  template <class Header, class Body>
  void Sized(const std::string& place, const Header& header, const Body& body) {
    const std::size_t size = file_.bytes.size();
    U32(0, place + ".size");
    header();
    const std::size_t start = file_.bytes.size();
    body();
    file_.Put(size, file_.bytes.size() - start, 4);
  }
  template <class Body>
  void Chunk(std::uint32_t id, const char* name, const std::string& place, const Body& body) {
    const auto header = [&] { U32(id, place + ".id"), Text(name, place + ".name"); };
    Sized(place, header, body);
  }
  template <class Body>
  void Record(const ModelHeader& header, const std::string& place, const Body& body) {
    const auto write = [&] {
      U32(header.typeCode, place + ".typeCode");
      Text("Version", place + ".versionText");
      U32(header.version, place + ".version");
      Text(header.name, place + ".name");
    };
    Sized(place, write, body);
  }

  void Material(const ModelMaterial& material, const std::string& place) {
    Record(material.header, place, [&] {
      Text(material.textureName, place + ".textureName");
      Floats({material.scalar3, material.scalar2});
      Number(std::bit_cast<std::uint32_t>(material.modeValue), 4);
      Colour(material.ambient);
      Colour(material.diffuse);
      Colour(material.specular);
      Floats({material.scalar1});
      Mark(place + ".twoSided");
      Number(material.twoSided ? 1 : 0, 1);
    });
  }

  void QobRecord(const ModelGroup& group, const std::string& place) {
    Record(group.header, place, [&] {
      List(place + ".vertices", group.vertices, &FileBuilder::Point);
      List(place + ".batches", group.batches, &FileBuilder::Batch);
    });
  }

  void Batch(const ModelBatch& batch, const std::string& place) {
    U32(std::bit_cast<std::uint32_t>(batch.material), place + ".material");
    U32(batch.faces.size(), place + ".faces");
    for (const ModelBatchFace& face : batch.faces) Plane(face.plane, place);
    Mark(place + ".vertexIndices");
    for (const ModelBatchFace& face : batch.faces) Triple(face.vertices);
    Mark(place + ".cornerIndices");
    for (const ModelBatchFace& face : batch.faces) Triple(face.corners);
    U32(batch.corners.size(), place + ".corners");
    for (const ModelCorner& corner : batch.corners) Point(corner.normal, place);
    for (const ModelCorner& corner : batch.corners) Floats({corner.u, corner.v});
    for (const ModelCorner& corner : batch.corners) Colour(corner.colour);
  }

  void KobRecord(const ModelGroup& group, const std::string& place) {
    Record(group.outerHeader, place + ".outer", [&] {
      QobRecord(group, place);
      List(place + ".collisionPoints", group.collisionPoints, &FileBuilder::Point);
      List(place + ".planes", group.planes, &FileBuilder::Plane);
      List(place + ".faces", group.faces, &FileBuilder::Face);
      List(place + ".surfaceSets", group.surfaceSets, &FileBuilder::SurfaceSet);
    });
  }
  void Face(const ModelFace& face, const std::string& place) {
    Mark(place);
    Triple(face.vertices);
    Number(face.position, 2);
    Number(face.surfaceSet, 4);
    Number(std::bit_cast<std::uint32_t>(face.batch), 4);
  }
  void SurfaceSet(const ModelSurfaceSet& set, const std::string& place) {
    Text(set.name, place + ".name");
    U32(set.flags, place + ".flags");
    List(place + ".faces", set.faces, &FileBuilder::Index);
  }

  FileBytes file_;
};

}  // namespace

FileBytes BuildFile(const ModelFile& model) {
  return FileBuilder(model).Take();
}

ModelFile Yard(ModelLayout layout) {
  ModelFile model;
  model.layout = layout;
  const ModelColour dark{0.1f, 0.1f, 0.1f, 1}, white{1, 1, 1, 1}, shine{0.9f, 0.9f, 0.9f, 1};
  model.materials.push_back(
      {{2, 1, "Brick"}, "brick.bmp", 0.1f, -0.0f, 3, -7, dark, white, shine, true});
  model.materials.push_back({{2, 1, "Grey"}, "NULL", 0, 0, 0, 0, {}, {}, {}, false});
  ModelGroup& group = model.groups.emplace_back();
  group.header = {3, 2, "Yard"};
  group.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0.5f}};
  const ModelPlane up{{0, 0, 1}, -0.0f};
  const ModelCorner corner{{0, 0, 1}, 0.25f, 0.75f, {0.5f, 0.5f, 0.5f, 1}};
  group.batches = {{1, {{up, {0, 1, 2}, {0, 1, 2}}, {up, {0, 2, 3}, {0, 2, 3}}}, {4, corner}},
                   {-1, {{up, {2, 1, 0}, {2, 1, 0}}}, {3, corner}}};
  if (layout == ModelLayout::kQob) return model;
  group.outerHeader = {35, 2, "Yard"};
  group.collisionPoints = {{5, 5, 5}, {6, 5, 5}, {6, 6, 5}};
  group.planes = {{{0, 0, 1}, -5}};
  group.faces = {
      {{0, 1, 2}, 0, 0, 0}, {{0, 1, 2}, 0, 2, -1}, {{0, 2, 3}, 1, 1, 0}, {{2, 1, 0}, 0, 0, 1}};
  group.surfaceSets = {{"NONE", 0x11, {0, 3}}, {"static_crates", 0x80, {2}}, {"NONE", 0x04, {1}}};
  return model;
}

ModelFile Huge(std::size_t count, ModelLayout layout) {
  ModelFile model = Yard(layout);
  ModelGroup& group = model.groups[0];
  group.vertices.resize(count);
  group.batches = {{0, {}, std::vector<ModelCorner>(count)}};
  for (std::size_t i = 0; i < count; ++i) {
    const auto low = static_cast<std::uint16_t>(i);
    group.batches[0].faces.push_back({{}, {low, low, 0}, {0, low, low}});
  }
  if (layout == ModelLayout::kQob) return model;
  group.collisionPoints.resize(count);
  group.planes.resize(count);
  group.faces.clear();
  group.surfaceSets = {{"NONE", 0, {}}, {"NONE", 4, {}}};
  for (std::size_t i = 0; i < 2 * count; ++i) {
    const auto low = static_cast<std::uint16_t>(i / 2);
    const bool drawn = i % 2 == 0;
    const std::uint32_t set = drawn ? 0 : 1;
    group.faces.push_back({{low, low, 0}, low, set, drawn ? 0 : -1});
    group.surfaceSets[set].faces.push_back(static_cast<std::uint16_t>(i));
  }
  return model;
}

ModelReadResult Read(const ModelFile& model) {
  return ReadModelBytes(BuildFile(model).bytes, model.layout);
}

std::string Lines(const ModelReadResult& result) {
  std::string lines;
  for (const ModelProblem& problem : result.problems) lines += ToLine(problem) + '\n';
  return lines;
}

}  // namespace mapexport
