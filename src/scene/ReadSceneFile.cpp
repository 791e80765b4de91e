// Reads scene files: what each member means, and the checks that need more than one member.
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "scene/BinaryLists.h"
#include "scene/BinarySceneFile.h"
#include "scene/CheckMesh.h"
#include "scene/JsonValue.h"
#include "scene/ReadMesh.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"

namespace mapexport {

namespace {

constexpr std::int64_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMinInt32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMaxInt64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMinInt64 = std::numeric_limits<std::int64_t>::min();

// The deepest nesting of what is read, as the parser's checks of its use in builds without
// optimization need it; it refuses nothing. Each node adds its object and its array of children;
// the deepest adds a mesh with lists of tuples.
constexpr std::size_t kMaxJsonDepth = 2 * kMaxSceneDepth + 8;

// The names of enumerators, in their order.
constexpr std::string_view kMaterialClasses[] = {"standard", "multi", "other"};
constexpr std::string_view kTextureClasses[] = {"bitmap", "other"};
constexpr std::string_view kObjects[] = {"none", "helper", "mesh"};

Color ReadColour(JsonValue& value) {
  const Point3 rgb = ReadPoint(value);
  return {rgb.x, rgb.y, rgb.z};
}

Matrix3 ReadTransform(JsonValue& value) {
  return {value.ReadTuple<Point3, 4>(ReadPoint)};
}

int ReadMaterialIndex(JsonValue& value) {
  const std::int64_t index = value.ReadInteger(kMinInt64, kMaxInt64);
  if (index < 0 || index > kMaxInt32) {
    value.Fail(fmt::format("must be null or an index into materials (from 0 on), not {}", index));
  }
  return static_cast<int>(index);
}

SceneTexture ReadTexture(JsonValue& value) {
  SceneTexture texture;
  value.ReadObject(
      JsonMember{"class",
                 [&](JsonValue& v) { texture.isBitmap = v.ReadChoice(kTextureClasses) == 0; }},
      JsonMember{"file", [&](JsonValue& v) { texture.file = v.ReadText(); }},
      JsonMember{"uvTransform", [&](JsonValue& v) { texture.uvTransform = ReadTransform(v); }});
  return texture;
}

SceneMaterial ReadMaterial(JsonValue& value) {
  SceneMaterial material;
  value.ReadObject(
      JsonMember{"name", [&](JsonValue& v) { material.name = v.ReadText(); }},
      JsonMember{"class",
                 [&](JsonValue& v) {
                   material.materialClass =
                       static_cast<SceneMaterialClass>(v.ReadChoice(kMaterialClasses));
                 }},
      JsonMember{"ambient", [&](JsonValue& v) { material.ambient = ReadColour(v); }},
      JsonMember{"diffuse", [&](JsonValue& v) { material.diffuse = ReadColour(v); }},
      JsonMember{"specular", [&](JsonValue& v) { material.specular = ReadColour(v); }},
      JsonMember{"opacity", [&](JsonValue& v) { material.opacity = v.ReadFloat(); }},
      JsonMember{"shininess", [&](JsonValue& v) { material.shininess = v.ReadFloat(); }},
      JsonMember{"shininessStrength",
                 [&](JsonValue& v) { material.shininessStrength = v.ReadFloat(); }},
      JsonMember{"shading",
                 [&](JsonValue& v) {
                   material.shading =
                       static_cast<std::int32_t>(v.ReadInteger(kMinInt32, kMaxInt32));
                 }},
      JsonMember{"twoSided", [&](JsonValue& v) { material.twoSided = v.ReadBool(); }},
      JsonMember{"diffuseMap", [&](JsonValue& v) { material.diffuseMap = ReadTexture(v); }},
      JsonMember{"subMaterials", [&](JsonValue& v) {
                   material.subMaterials = v.ReadList<int>([](JsonValue& index) {
                     return index.ReadNull() ? -1 : ReadMaterialIndex(index);
                   });
                 }});
  return material;
}

// Reads a member "mesh" in the form that the file has.
using MeshReader = std::function<FileMesh(JsonValue& mesh)>;

// Counts nodes and materials.
class ItemCount {
 public:
  explicit ItemCount(std::uint64_t most) : most_(most), left_(most) {}

  void Add(JsonValue& item) {
    if (left_ == 0) {
      item.Fail(fmt::format("is too much: nodes and materials may be {} together", most_));
    }
    --left_;
  }

 private:
  std::uint64_t most_;
  std::uint64_t left_;
};

// A node that is being read.
struct OpenNode {
  OpenNode(JsonValue& value, SceneNode& target) : members(value), node(target) {}

  JsonObject members;
  SceneNode& node;
  std::optional<SceneObject> object;
  std::optional<JsonArray> children;  // while it is their turn
};

// Reads members until it is the children's turn; false when there are no more members.
bool ReadNodeMembers(OpenNode& open, const MeshReader& readMesh) {
  SceneNode& node = open.node;
  while (!open.children) {
    const bool more = open.members.ReadMember(
        JsonMember{"name", [&](JsonValue& v) { node.name = v.ReadText(); }},
        JsonMember{"objectTransform",
                   [&](JsonValue& v) { node.objectTransform = ReadTransform(v); }},
        JsonMember{"wireColor",
                   [&](JsonValue& v) {
                     node.wireColor = v.ReadTuple<std::uint8_t, 3>([](JsonValue& component) {
                       return static_cast<std::uint8_t>(component.ReadInteger(0, 255));
                     });
                   }},
        JsonMember{"userProperties", [&](JsonValue& v) { node.userProperties = v.ReadText(); }},
        JsonMember{"material", [&](JsonValue& v) { node.material = ReadMaterialIndex(v); }},
        JsonMember{
            "object",
            [&](JsonValue& v) { open.object = static_cast<SceneObject>(v.ReadChoice(kObjects)); }},
        JsonMember{"mesh",
                   [&](JsonValue& v) {
                     FileMesh read = readMesh(v);
                     node.mesh = std::move(read.mesh);
                     node.lostCreases = read.lostCreases;
                   }},
        JsonMember{"children", [&](JsonValue& v) { open.children.emplace(v); }});
    if (!more) return false;
  }
  return true;
}

void FinishNode(OpenNode& open) {
  SceneNode& node = open.node;
  node.object = open.object.value_or(node.mesh ? SceneObject::kMesh : SceneObject::kNone);
  if (node.object != SceneObject::kMesh) node.mesh = nullptr;
}

// Without recursion: the frames of 1,000 levels are too much for some stacks.
void ReadNodes(JsonValue& value, SceneNode& root, const MeshReader& readMesh, ItemCount& items) {
  std::deque<OpenNode> levels;  // places refer to those of the levels above, which must not move
  levels.emplace_back(value, root);
  while (!levels.empty()) {
    OpenNode& open = levels.back();
    if (!ReadNodeMembers(open, readMesh)) {
      FinishNode(open);
      levels.pop_back();
      continue;
    }
    const bool more = open.children->ReadElement([&](JsonValue& child) {
      if (levels.size() == kMaxSceneDepth) {
        child.Fail(fmt::format("nodes are nested deeper than {} levels", kMaxSceneDepth));
      }
      items.Add(child);
      levels.emplace_back(child, open.node.children.emplace_back());
    });
    if (!more) open.children.reset();
  }
}

void CheckMaterialIndex(const JsonDocument& document, const Scene& scene, int index,
                        const JsonPlace& place) {
  if (index < 0 || static_cast<std::size_t>(index) < scene.materials.size()) return;
  document.Fail(place, fmt::format("material index {} is out of range (the scene has {})", index,
                                   Count(scene.materials.size(), "material", "materials")));
}

void CheckSubMaterials(const JsonDocument& document, const Scene& scene,
                       const JsonPlace& materialsPlace) {
  for (std::size_t i = 0; i < scene.materials.size(); ++i) {
    const JsonPlace materialPlace(materialsPlace, i);
    const JsonPlace listPlace(materialPlace, "subMaterials");
    const std::vector<int>& list = scene.materials[i].subMaterials;
    for (std::size_t j = 0; j < list.size(); ++j) {
      CheckMaterialIndex(document, scene, list[j], JsonPlace(listPlace, j));
    }
  }
}

void CheckNodeMaterials(const JsonDocument& document, const Scene& scene, const SceneNode& node,
                        const JsonPlace& place) {
  CheckMaterialIndex(document, scene, node.material, JsonPlace(place, "material"));
  const JsonPlace childrenPlace(place, "children");
  for (std::size_t i = 0; i < node.children.size(); ++i) {
    CheckNodeMaterials(document, scene, node.children[i], JsonPlace(childrenPlace, i));
  }
}

void ReadFormat(JsonValue& value) {
  static constexpr std::string_view kFormats[] = {"mapexport-scene"};
  value.ReadChoice(kFormats);
}

void ReadVersion(JsonValue& value) {
  const std::int64_t version = value.ReadInteger(kMinInt64, kMaxInt64);
  if (version != 1) value.Fail(fmt::format("version {} is not known, only 1 is", version));
}

Scene ReadScene(JsonDocument& document, const MeshReader& readMesh, std::uint64_t mostItems) {
  Scene scene;
  ItemCount items(mostItems);
  bool hasFormat = false;
  bool hasVersion = false;
  bool hasRoot = false;
  JsonObject(document).ReadMembers(
      JsonMember{"format",
                 [&](JsonValue& v) {
                   ReadFormat(v);
                   hasFormat = true;
                 }},
      JsonMember{"version",
                 [&](JsonValue& v) {
                   ReadVersion(v);
                   hasVersion = true;
                 }},
      JsonMember{"materials",
                 [&](JsonValue& v) {
                   scene.materials = v.ReadList<SceneMaterial>([&items](JsonValue& material) {
                     items.Add(material);
                     return ReadMaterial(material);
                   });
                 }},
      JsonMember{"root", [&](JsonValue& v) {
                   ReadNodes(v, scene.root, readMesh, items);
                   hasRoot = true;
                 }});
  document.End();
  const JsonPlace documentPlace;
  const auto require = [&](bool has, std::string_view name) {
    if (!has) document.Fail(JsonPlace(documentPlace, name), "is required, but missing");
  };
  require(hasFormat, "format");
  require(hasVersion, "version");
  require(hasRoot, "root");
  CheckSubMaterials(document, scene, JsonPlace(documentPlace, "materials"));
  CheckNodeMaterials(document, scene, scene.root, JsonPlace(documentPlace, "root"));
  return scene;
}

}  // namespace

Scene ReadSceneFile(const std::string& path, const SceneLimits& limits) {
  try {
    if (IsBinarySceneFile(path)) return ReadBinaryScene(OpenToRead(path), path, limits);
    const FileText text(path, JsonDocument::CheckBeginning);
    JsonDocument document(path, text, kMaxJsonDepth);
    return ReadScene(document, ReadMesh, limits.mostItems);
  } catch (const std::bad_alloc&) {
    throw SceneError(path + ": there is not enough memory to read it");
  }
}

Scene ReadBinaryScene(const Descriptor& file, const std::string& name, const SceneLimits& limits) {
  try {
    BinarySceneFile binary(file, name, limits.mostJson);
    JsonDocument document(name, binary.TakeJson(), kMaxJsonDepth);
    BinaryLists lists(binary, limits.mostBytes);
    return ReadScene(
        document, [&lists](JsonValue& v) { return lists.ReadMesh(v); }, limits.mostItems);
  } catch (const std::bad_alloc&) {
    throw SceneError(name + ": there is not enough memory to read it");
  }
}

}  // namespace mapexport
