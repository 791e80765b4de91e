#include <string_view>

#include "modelreader/ModelTextures.h"
#include "modelreader/WriteModel.h"
#include "system/JsonStream.h"

namespace mapexport {

namespace {

class ModelWriter {
 public:
  ModelWriter(bool summary, std::ostream& out) : summary_(summary), json_(out) {}

  void Write(const ModelFile& model) {
    json_.Open('{', kOnLines);
    json_.Key("layout");
    json_.Text(model.layout == ModelLayout::kQob ? "qob" : "kob");
    json_.Key("materials");
    Entries(model.materials, [this](const ModelMaterial& material) { Write(material); });
    json_.Key("textures");
    Entries(TexturesOf(model), [this](const ModelTexture& texture) { Write(texture); });
    json_.Key("groups");
    Entries(model.groups, [&](const ModelGroup& group) { Write(group, model.layout); });
    json_.Close('}');
  }

 private:
  static constexpr bool kOnLines = JsonStream::kOnLines;
  static constexpr bool kOnOneLine = JsonStream::kOnOneLine;

  template <typename List, typename WriteEntry>
  void Entries(const List& list, WriteEntry writeEntry) {
    json_.Open('[', kOnLines);
    for (const auto& entry : list) writeEntry(entry);
    json_.Close(']');
  }

  /// Writes a list that can be long as the member `list`; a summary has its length as `count`.
  template <typename List, typename WriteEntry>
  void LongList(std::string_view list, std::string_view count, const List& entries,
                WriteEntry writeEntry) {
    json_.Key(summary_ ? count : list);
    if (summary_) {
      json_.Number(entries.size());
    } else {
      Entries(entries, writeEntry);
    }
  }

  template <typename... Numbers>
  void Array(Numbers... numbers) {
    json_.Open('[', kOnOneLine);
    (json_.Number(numbers), ...);
    json_.Close(']');
  }
  template <typename Number>
  void Member(std::string_view key, Number number) {
    json_.Key(key);
    json_.Number(number);
  }
  void Member(std::string_view key, const std::string& text) {
    json_.Key(key);
    json_.Text(text);
  }

  void Write(const ModelPoint& point) { Array(point.x, point.y, point.z); }
  void Write(const ModelPlane& plane) {
    Array(plane.normal.x, plane.normal.y, plane.normal.z, plane.d);
  }
  void Write(const ModelColour& colour) { Array(colour.r, colour.g, colour.b, colour.a); }
  void Write(const std::array<std::uint16_t, 3>& indices) {
    Array(indices[0], indices[1], indices[2]);
  }
  template <typename Value>
  void WriteMember(std::string_view key, const Value& value) {
    json_.Key(key);
    Write(value);
  }

  void WriteHeader(const ModelHeader& header) {
    Member("name", header.name);
    Member("typeCode", header.typeCode);
    Member("version", header.version);
  }

  void Write(const ModelMaterial& material) {
    json_.Open('{', kOnOneLine);
    WriteHeader(material.header);
    Member("textureName", material.textureName);
    Member("scalar1", material.scalar1);
    Member("scalar2", material.scalar2);
    Member("scalar3", material.scalar3);
    Member("modeValue", material.modeValue);
    WriteMember("ambient", material.ambient);
    WriteMember("diffuse", material.diffuse);
    WriteMember("specular", material.specular);
    json_.Key("twoSided");
    json_.Bool(material.twoSided);
    json_.Close('}');
  }

  void Write(const ModelTexture& texture) {
    json_.Open('{', kOnOneLine);
    Member("name", texture.name);
    json_.Key("materials");
    json_.Open('[', kOnOneLine);
    for (const std::string& material : texture.materials) json_.Text(material);
    json_.Close(']');
    json_.Close('}');
  }

  void Write(const ModelBatch& batch) {
    json_.Open('{', !summary_);
    Member("material", batch.material);
    LongList("faces", "faceCount", batch.faces, [this](const ModelBatchFace& face) {
      json_.Open('{', kOnOneLine);
      WriteMember("plane", face.plane);
      WriteMember("vertices", face.vertices);
      WriteMember("corners", face.corners);
      json_.Close('}');
    });
    LongList("corners", "cornerCount", batch.corners, [this](const ModelCorner& corner) {
      json_.Open('{', kOnOneLine);
      WriteMember("normal", corner.normal);
      json_.Key("uv");
      Array(corner.u, corner.v);
      WriteMember("colour", corner.colour);
      json_.Close('}');
    });
    json_.Close('}');
  }

  void Write(const ModelFace& face) {
    json_.Open('{', kOnOneLine);
    WriteMember("vertices", face.vertices);
    Member("position", face.position);
    Member("surfaceSet", face.surfaceSet);
    Member("batch", face.batch);
    json_.Close('}');
  }

  void Write(const ModelSurfaceSet& set) {
    json_.Open('{', kOnOneLine);
    Member("name", set.name);
    Member("flags", set.flags);
    json_.Key(summary_ ? "faceCount" : "faces");
    if (summary_) {
      json_.Number(set.faces.size());
    } else {
      json_.Open('[', kOnOneLine);
      for (const std::uint16_t face : set.faces) json_.Number(face);
      json_.Close(']');
    }
    json_.Close('}');
  }

  void Write(const ModelGroup& group, ModelLayout layout) {
    const auto writePoint = [this](const ModelPoint& point) { Write(point); };
    json_.Open('{', kOnLines);
    WriteHeader(group.header);
    LongList("vertices", "vertexCount", group.vertices, writePoint);
    json_.Key("batches");
    Entries(group.batches, [this](const ModelBatch& batch) { Write(batch); });
    if (layout == ModelLayout::kKob) {
      json_.Key("outer");
      json_.Open('{', kOnOneLine);
      WriteHeader(group.outerHeader);
      json_.Close('}');
      LongList("collisionPoints", "collisionPointCount", group.collisionPoints, writePoint);
      LongList("planes", "planeCount", group.planes,
               [this](const ModelPlane& plane) { Write(plane); });
      LongList("faces", "faceCount", group.faces, [this](const ModelFace& face) { Write(face); });
      json_.Key("surfaceSets");
      Entries(group.surfaceSets, [this](const ModelSurfaceSet& set) { Write(set); });
    }
    json_.Close('}');
  }

  const bool summary_;
  JsonStream json_;
};

}  // namespace

void WriteModelJson(const ModelFile& model, bool summary, std::ostream& out) {
  ModelWriter(summary, out).Write(model);
}

}  // namespace mapexport
