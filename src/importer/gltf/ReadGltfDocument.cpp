// The JSON of a glTF file.
#include "importer/gltf/ReadGltfDocument.h"

#include <array>
#include <utility>

#include <fmt/format.h>

#include "importer/SourceFile.h"
#include "importer/gltf/GltfMembers.h"
#include "importer/text/HostText.h"

namespace mapexport {
namespace {

/// Deeper than any member that is read.
constexpr std::size_t kDepth = 24;

void ReadText(JsonValue& value, std::string& text) {
  text = value.ReadText();
}

void ReadScene(JsonValue& value, std::vector<int>& roots) {
  value.ReadObject(IndexListMember("nodes", roots));
}

void ReadTexture(JsonValue& value, int& image) {
  int plain = kNoGltfIndex;
  std::array<int, 4> others{kNoGltfIndex, kNoGltfIndex, kNoGltfIndex, kNoGltfIndex};
  const auto other = [&others](const char* name, std::size_t i) {
    return JsonMember{name, [&others, i](JsonValue& member) {
                        member.ReadObject(IndexMember("source", others[i]));
                      }};
  };
  value.ReadObject(IndexMember("source", plain),
                   ExtensionsMember(other("KHR_texture_basisu", 0), other("EXT_texture_webp", 1),
                                    other("EXT_texture_avif", 2), other("MSFT_texture_dds", 3)));
  image = plain;
  for (const int source : others) {
    if (image == kNoGltfIndex) image = source;
  }
}

/// The ending of files of the kind that a media type names.
std::string_view EndingOf(std::string_view mediaType) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kTypes{
      {{"image/jpeg", "jpg"},
       {"image/png", "png"},
       {"image/ktx2", "ktx2"},
       {"image/webp", "webp"},
       {"image/avif", "avif"},
       {"image/vnd-ms.dds", "dds"}}};
  for (const auto& [type, ending] : kTypes) {
    if (mediaType == type) return ending;
  }
  return "png";
}

void ReadImage(JsonValue& value, GltfImage& image) {
  std::string mediaType;
  int view = kNoGltfIndex;
  value.ReadObject(TextMember("name", image.name), TextMember("uri", image.uri),
                   TextMember("mimeType", mediaType), IndexMember("bufferView", view));
  if (image.uri.starts_with("data:")) {
    if (mediaType.empty()) mediaType = image.uri.substr(5, image.uri.find_first_of(";,") - 5);
    image.uri = {};
    image.isInFile = true;
  }
  image.isInFile = image.isInFile || view != kNoGltfIndex;
  image.ending = EndingOf(mediaType);
}

void ReadSparse(JsonValue& value, GltfSparse& sparse) {
  value.ReadObject(SizeMember("count", sparse.count),
                   JsonMember{"indices",
                              [&](JsonValue& member) {
                                member.ReadObject(IndexMember("bufferView", sparse.indexView),
                                                  SizeMember("byteOffset", sparse.indexOffset),
                                                  IndexMember("componentType", sparse.indexType));
                              }},
                   JsonMember{"values", [&](JsonValue& member) {
                                member.ReadObject(IndexMember("bufferView", sparse.valueView),
                                                  SizeMember("byteOffset", sparse.valueOffset));
                              }});
}

void ReadAccessor(JsonValue& value, GltfAccessor& accessor) {
  value.ReadObject(
      IndexMember("bufferView", accessor.bufferView), SizeMember("byteOffset", accessor.byteOffset),
      IndexMember("componentType", accessor.componentType),
      BoolMember("normalized", accessor.isNormalized), SizeMember("count", accessor.count),
      TextMember("type", accessor.type), JsonMember{"sparse", [&](JsonValue& member) {
                                                      ReadSparse(member, accessor.sparse.emplace());
                                                    }});
}

void ReadMeshopt(JsonValue& value, GltfMeshopt& meshopt) {
  constexpr std::array<std::string_view, 3> kModes{"ATTRIBUTES", "TRIANGLES", "INDICES"};
  constexpr std::array<std::string_view, 4> kFilters{"NONE", "OCTAHEDRAL", "QUATERNION",
                                                     "EXPONENTIAL"};
  value.ReadObject(
      IndexMember("buffer", meshopt.buffer), SizeMember("byteOffset", meshopt.byteOffset),
      SizeMember("byteLength", meshopt.byteLength), SizeMember("byteStride", meshopt.byteStride),
      SizeMember("count", meshopt.count),
      JsonMember{"mode",
                 [&](JsonValue& member) {
                   meshopt.mode = static_cast<GltfMeshopt::Mode>(member.ReadChoice(kModes));
                 }},
      JsonMember{"filter", [&](JsonValue& member) {
                   meshopt.filter = static_cast<GltfMeshopt::Filter>(member.ReadChoice(kFilters));
                 }});
}

void ReadBufferView(JsonValue& value, GltfBufferView& view) {
  value.ReadObject(IndexMember("buffer", view.buffer), SizeMember("byteOffset", view.byteOffset),
                   SizeMember("byteLength", view.byteLength),
                   SizeMember("byteStride", view.byteStride),
                   ExtensionsMember(JsonMember{"EXT_meshopt_compression", [&](JsonValue& member) {
                                                 ReadMeshopt(member, view.meshopt.emplace());
                                               }}));
}

void ReadBuffer(JsonValue& value, GltfBuffer& buffer) {
  value.ReadObject(SizeMember("byteLength", buffer.byteLength),
                   JsonMember{"uri", [&](JsonValue& member) { buffer.uri = member.ReadText(); }});
}

}  // namespace

GltfDocument ReadGltfDocument(const std::string& path, std::string_view json) {
  GltfDocument read;
  std::size_t imagesInFile = 0;
  JsonDocument document(path, json, kDepth);
  JsonObject(document).ReadMembers(
      JsonMember{"asset",
                 [&](JsonValue& value) {
                   value.ReadObject(TextMember("version", read.version),
                                    TextMember("minVersion", read.minVersion));
                 }},
      ListMember("extensionsRequired", read.extensionsRequired, ReadText),
      IndexMember("scene", read.scene), ListMember("scenes", read.scenes, ReadScene),
      ListMember("nodes", read.nodes, ReadGltfNode),
      ListMember("meshes", read.meshes, ReadGltfMesh),
      ListMember("skins", read.skins,
                 [](JsonValue& value, GltfSkin& skin) {
                   value.ReadObject(IndexMember("inverseBindMatrices", skin.inverseBindMatrices),
                                    IndexListMember("joints", skin.joints));
                 }),
      ListMember("materials", read.materials, ReadGltfMaterial),
      ListMember("textures", read.textures, ReadTexture),
      ListMember("images", read.images,
                 [&](JsonValue& value, GltfImage& image) {
                   ReadImage(value, image);
                   if (image.isInFile) image.number = imagesInFile++;
                 }),
      ListMember("accessors", read.accessors, ReadAccessor),
      ListMember("bufferViews", read.bufferViews, ReadBufferView),
      ListMember("buffers", read.buffers, ReadBuffer), CountMember("cameras", read.cameras),
      CountMember("animations", read.animations),
      ExtensionsMember(JsonMember{"KHR_lights_punctual",
                                  [&](JsonValue& value) {
                                    value.ReadObject(CountMember("lights", read.lights));
                                  }},
                       JsonMember{"KHR_materials_variants", [&](JsonValue& value) {
                                    value.ReadObject(CountMember("variants", read.variants));
                                  }}));
  document.End();
  if (read.version.empty()) {
    RefuseFile(path, "asset.version: is missing, so that it is no glTF document");
  }
  if (!read.version.starts_with('2')) {
    RefuseFile(path, fmt::format("is glTF of version \"{}\", which can't be read; save it as "
                                 "version 2",
                                 FirstLine(read.version)));
  }
  if (!read.minVersion.empty() && read.minVersion != "2.0") {
    RefuseFile(path, fmt::format("asset.minVersion: glTF of version \"{}\" is needed to read it",
                                 FirstLine(read.minVersion)));
  }
  return read;
}

}  // namespace mapexport
