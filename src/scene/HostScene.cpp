// The host's interfaces, each a thin view of a part of the Scene.
#include "scene/HostScene.h"

#include <cassert>
#include <vector>

namespace mapexport {

namespace {

// Stands for all the classes that have no identifier here.
constexpr Class_ID kOtherClassID{0x7FFF, 0};

bool CopyUVTransform(const SceneTexture& texture, Matrix3& uvTransform) {
  if (texture.uvTransform) uvTransform = *texture.uvTransform;
  return texture.uvTransform.has_value();
}

class HostBitmapTex final : public BitmapTex {
 public:
  explicit HostBitmapTex(const SceneTexture& texture) : texture_(texture) {}

  Class_ID ClassID() const override { return kBitmapTexClassID; }
  bool GetUVTransform(Matrix3& uvTransform) const override {
    return CopyUVTransform(texture_, uvTransform);
  }
  const char* GetMapName() const override { return texture_.file.c_str(); }

 private:
  const SceneTexture& texture_;
};

class HostOtherTexmap final : public Texmap {
 public:
  explicit HostOtherTexmap(const SceneTexture& texture) : texture_(texture) {}

  Class_ID ClassID() const override { return kOtherClassID; }
  bool GetUVTransform(Matrix3& uvTransform) const override {
    return CopyUVTransform(texture_, uvTransform);
  }

 private:
  const SceneTexture& texture_;
};

class HostStdMat final : public StdMat {
 public:
  explicit HostStdMat(const SceneMaterial& material) : material_(material) {
    if (!material.diffuseMap) return;
    if (material.diffuseMap->isBitmap) {
      diffuseMap_ = std::make_unique<HostBitmapTex>(*material.diffuseMap);
    } else {
      diffuseMap_ = std::make_unique<HostOtherTexmap>(*material.diffuseMap);
    }
  }

  Class_ID ClassID() const override { return kStandardMtlClassID; }
  const char* GetName() const override { return material_.name.c_str(); }
  int NumSubMtls() const override { return 0; }
  Mtl* GetSubMtl(int) const override { return nullptr; }
  Color GetAmbient(TimeValue) const override { return material_.ambient; }
  Color GetDiffuse(TimeValue) const override { return material_.diffuse; }
  Color GetSpecular(TimeValue) const override { return material_.specular; }
  float GetOpacity(TimeValue) const override { return material_.opacity; }
  float GetShininess(TimeValue) const override { return material_.shininess; }
  float GetShinStr(TimeValue) const override { return material_.shininessStrength; }
  int GetShading() const override { return material_.shading; }
  bool GetTwoSided() const override { return material_.twoSided; }
  Texmap* GetSubTexmap(int i) const override { return i == 1 ? diffuseMap_.get() : nullptr; }

 private:
  const SceneMaterial& material_;
  std::unique_ptr<Texmap> diffuseMap_;
};

// The materials of a scene, made once, as nodes and other materials refer to them.
class HostMaterials {
 public:
  void Build(const std::vector<SceneMaterial>& materials);
  /// The material of an index of the scene, null for -1.
  Mtl* At(int index) const {
    assert(index < static_cast<int>(materials_.size()));
    return index < 0 ? nullptr : materials_[static_cast<std::size_t>(index)].get();
  }

 private:
  std::vector<std::unique_ptr<Mtl>> materials_;
};

// A multi material, or one of any other class, which has no sub-materials to show.
class HostMtl final : public Mtl {
 public:
  HostMtl(const SceneMaterial& material, const HostMaterials& table)
      : material_(material), table_(table) {}

  Class_ID ClassID() const override { return IsMulti() ? kMultiMtlClassID : kOtherClassID; }
  const char* GetName() const override { return material_.name.c_str(); }
  int NumSubMtls() const override {
    return IsMulti() ? static_cast<int>(material_.subMaterials.size()) : 0;
  }
  // Looked up only now: a multi material may refer to a later one and to itself.
  Mtl* GetSubMtl(int i) const override {
    if (i < 0 || i >= NumSubMtls()) return nullptr;
    return table_.At(material_.subMaterials[static_cast<std::size_t>(i)]);
  }

 private:
  bool IsMulti() const { return material_.materialClass == SceneMaterialClass::kMulti; }

  const SceneMaterial& material_;
  const HostMaterials& table_;
};

void HostMaterials::Build(const std::vector<SceneMaterial>& materials) {
  materials_.reserve(materials.size());
  for (const SceneMaterial& material : materials) {
    if (material.materialClass == SceneMaterialClass::kStandard) {
      materials_.push_back(std::make_unique<HostStdMat>(material));
    } else {
      materials_.push_back(std::make_unique<HostMtl>(material, *this));
    }
  }
}

class HostHelper final : public Object {
 public:
  bool CanConvertToType(Class_ID) const override { return false; }
};

class HostGeometry final : public GeomObject {
 public:
  explicit HostGeometry(const Mesh* mesh) : mesh_(mesh) {}

  bool CanConvertToType(Class_ID id) const override { return id == kTriObjectClassID; }
  const Mesh* GetRenderMesh(TimeValue, INode*, View&, bool& needDelete) override {
    needDelete = false;
    return mesh_;
  }

 private:
  const Mesh* mesh_;
};

class HostNode final : public INode {
 public:
  HostNode(const SceneNode& node, Mtl* material) : node_(&node), material_(material) {
    if (node.object == SceneObject::kHelper) object_ = std::make_unique<HostHelper>();
    if (node.object == SceneObject::kMesh)
      object_ = std::make_unique<HostGeometry>(node.mesh.get());
  }
  // The children follow each other from `first` on.
  void SetChildren(HostNode* first) { firstChild_ = first; }

  const char* GetName() const override { return node_->name.c_str(); }
  int NumberOfChildren() const override { return static_cast<int>(node_->children.size()); }
  INode* GetChildNode(int i) const override {
    assert(i >= 0 && i < NumberOfChildren());
    return firstChild_ + i;
  }
  Object* EvalWorldState(TimeValue, bool) override { return object_.get(); }
  Matrix3 GetObjectTM(TimeValue) const override { return node_->objectTransform; }
  Mtl* GetMtl() const override { return material_; }
  void GetUserPropBuffer(CStr& buffer) const override {
    buffer = CStr(std::string_view(node_->userProperties));
  }
  std::uint32_t GetWireColor() const override {
    const auto& [red, green, blue] = node_->wireColor;
    return std::uint32_t{red} | std::uint32_t{green} << 8 | std::uint32_t{blue} << 16;
  }

 private:
  const SceneNode* node_;
  Mtl* material_;
  std::unique_ptr<Object> object_;
  HostNode* firstChild_ = nullptr;
};

// All nodes, level by level, which puts the children of each next to each other.
std::vector<HostNode> BuildNodes(const SceneNode& root, const HostMaterials& materials) {
  std::vector<const SceneNode*> order{&root};
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (const SceneNode& child : order[i]->children) order.push_back(&child);
  }
  std::vector<HostNode> nodes;
  nodes.reserve(order.size());
  for (const SceneNode* node : order) nodes.emplace_back(*node, materials.At(node->material));
  HostNode* next = nodes.data() + 1;
  for (HostNode& node : nodes) {
    node.SetChildren(next);
    next += node.NumberOfChildren();
  }
  return nodes;
}

}  // namespace

struct HostScene::Content {
  HostMaterials materials;
  std::vector<HostNode> nodes;  // the root first
};

HostScene::HostScene(const Scene& scene, std::size_t longestList)
    : content_(std::make_unique<Content>()), longestList_(longestList) {
  content_->materials.Build(scene.materials);
  content_->nodes = BuildNodes(scene.root, content_->materials);
}

HostScene::~HostScene() = default;

TimeValue HostScene::GetTime() const {
  return 0;
}

INode* HostScene::GetRootNode() const {
  return &content_->nodes.front();
}

HWND HostScene::GetMAXHWnd() const {
  return nullptr;
}

std::size_t HostScene::GetLongestList() const {
  return longestList_;
}

}  // namespace mapexport
