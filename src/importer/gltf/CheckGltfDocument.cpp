// The references of a glTF document.
#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "importer/SourceFile.h"
#include "importer/gltf/ReadGltfDocument.h"
#include "importer/text/HostText.h"

namespace mapexport {
namespace {

/// Required extensions that are read, or whose loss changes no triangle.
constexpr std::array<std::string_view, 30> kKnownExtensions{"EXT_mesh_gpu_instancing",
                                                            "EXT_meshopt_compression",
                                                            "EXT_texture_avif",
                                                            "EXT_texture_webp",
                                                            "KHR_animation_pointer",
                                                            "KHR_draco_mesh_compression",
                                                            "KHR_lights_punctual",
                                                            "KHR_materials_anisotropy",
                                                            "KHR_materials_clearcoat",
                                                            "KHR_materials_diffuse_transmission",
                                                            "KHR_materials_dispersion",
                                                            "KHR_materials_emissive_strength",
                                                            "KHR_materials_ior",
                                                            "KHR_materials_iridescence",
                                                            "KHR_materials_pbrSpecularGlossiness",
                                                            "KHR_materials_sheen",
                                                            "KHR_materials_specular",
                                                            "KHR_materials_transmission",
                                                            "KHR_materials_unlit",
                                                            "KHR_materials_variants",
                                                            "KHR_materials_volume",
                                                            "KHR_mesh_quantization",
                                                            "KHR_node_visibility",
                                                            "KHR_technique_webgl",
                                                            "KHR_techniques_webgl",
                                                            "KHR_texture_basisu",
                                                            "KHR_texture_transform",
                                                            "KHR_xmp_json_ld",
                                                            "MSFT_lod",
                                                            "MSFT_texture_dds"};

class Checker {
 public:
  Checker(const std::string& path, GltfDocument& document) : path_(path), d_(document) {}

  void Run() {
    CheckExtensions();
    CheckNodes();
    CheckMeshes();
    for (std::size_t i = 0; i < d_.skins.size(); ++i) {
      const auto place = [i] { return fmt::format("skins[{}]", i); };
      CheckIndex(d_.skins[i].inverseBindMatrices, d_.accessors.size(), "accessors", place,
                 ".inverseBindMatrices");
      CheckList(d_.skins[i].joints, d_.nodes.size(), "nodes", place, "joints");
    }
    CheckMaterials();
    CheckData();
    CheckScenes();
    FindParents();
    CheckRoots();
  }

 private:
  [[noreturn]] void Fail(const std::string& place, const std::string& reason) const {
    RefuseFile(path_, fmt::format("{}: {}", place, reason));
  }

  /// An index that may be missing.
  template <class Place>
  void CheckIndex(int index, std::size_t count, std::string_view what, const Place& place,
                  std::string_view member) const {
    if (index == kNoGltfIndex || static_cast<std::size_t>(index) < count) return;
    Fail(place() + std::string(member),
         count == 1 ? fmt::format("{}, there is only one", index)
                    : fmt::format("{}, there are {} {}", index, count, what));
  }

  template <class Place>
  void CheckList(const std::vector<int>& indices, std::size_t count, std::string_view what,
                 const Place& place, std::string_view member) const {
    for (std::size_t k = 0; k < indices.size(); ++k) {
      CheckIndex(
          indices[k], count, what, [&] { return fmt::format("{}.{}[{}]", place(), member, k); },
          "");
    }
  }

  template <class Place>
  void CheckAttributes(const GltfAttributes& attributes, const Place& place) const {
    for (const GltfAttribute& attribute : attributes) {
      CheckIndex(
          attribute.index, d_.accessors.size(), "accessors",
          [&] { return fmt::format("{}.{}", place(), FirstLine(attribute.name)); }, "");
    }
  }

  void CheckExtensions() const {
    for (std::size_t i = 0; i < d_.extensionsRequired.size(); ++i) {
      const std::string& name = d_.extensionsRequired[i];
      if (std::ranges::find(kKnownExtensions, std::string_view(name)) != kKnownExtensions.end())
        continue;
      Fail(fmt::format("extensionsRequired[{}]", i),
           fmt::format("the extension \"{}\" is not understood", FirstLine(name)));
    }
  }

  void CheckNodes() const {
    for (std::size_t i = 0; i < d_.nodes.size(); ++i) {
      const GltfNode& node = d_.nodes[i];
      const auto place = [i] { return fmt::format("nodes[{}]", i); };
      CheckIndex(node.mesh, d_.meshes.size(), "meshes", place, ".mesh");
      CheckIndex(node.skin, d_.skins.size(), "skins", place, ".skin");
      CheckList(node.children, d_.nodes.size(), "nodes", place, "children");
      CheckAttributes(node.instancing,
                      [&] { return place() + ".extensions.EXT_mesh_gpu_instancing.attributes"; });
    }
  }

  void CheckMeshes() const {
    for (std::size_t i = 0; i < d_.meshes.size(); ++i) {
      for (std::size_t k = 0; k < d_.meshes[i].primitives.size(); ++k) {
        const GltfPrimitive& primitive = d_.meshes[i].primitives[k];
        const auto place = [&] { return fmt::format("meshes[{}].primitives[{}]", i, k); };
        CheckAttributes(primitive.attributes, [&] { return place() + ".attributes"; });
        CheckIndex(primitive.indices, d_.accessors.size(), "accessors", place, ".indices");
        CheckIndex(primitive.material, d_.materials.size(), "materials", place, ".material");
        for (std::size_t t = 0; t < primitive.targets.size(); ++t) {
          CheckAttributes(primitive.targets[t],
                          [&] { return fmt::format("{}.targets[{}]", place(), t); });
        }
        if (!primitive.draco) continue;
        CheckIndex(primitive.draco->bufferView, d_.bufferViews.size(), "bufferViews", place,
                   ".extensions.KHR_draco_mesh_compression.bufferView");
      }
    }
  }

  template <class Place>
  void CheckTexture(const GltfTextureUse& use, const Place& place, std::string_view member) const {
    CheckIndex(use.texture, d_.textures.size(), "textures", place, member);
  }

  void CheckMaterials() const {
    for (std::size_t i = 0; i < d_.materials.size(); ++i) {
      const GltfMaterial& material = d_.materials[i];
      const auto place = [i] { return fmt::format("materials[{}]", i); };
      CheckTexture(material.baseColorTexture, place,
                   ".pbrMetallicRoughness.baseColorTexture.index");
      CheckTexture(material.emissiveTexture, place, ".emissiveTexture.index");
      if (!material.specularGlossiness) continue;
      CheckTexture(material.specularGlossiness->diffuseTexture, place,
                   ".extensions.KHR_materials_pbrSpecularGlossiness.diffuseTexture.index");
    }
    for (std::size_t i = 0; i < d_.textures.size(); ++i) {
      CheckIndex(
          d_.textures[i], d_.images.size(), "images",
          [i] { return fmt::format("textures[{}]", i); }, ".source");
    }
  }

  template <class Place>
  void CheckSize(std::size_t size, const Place& place) const {
    if (size == kNoGltfSize) Fail(place(), "is missing");
  }

  void CheckData() const {
    const std::size_t views = d_.bufferViews.size();
    for (std::size_t i = 0; i < d_.buffers.size(); ++i) {
      CheckSize(d_.buffers[i].byteLength, [i] { return fmt::format("buffers[{}].byteLength", i); });
    }
    for (std::size_t i = 0; i < d_.accessors.size(); ++i) {
      const auto place = [i] { return fmt::format("accessors[{}]", i); };
      CheckSize(d_.accessors[i].count, [&] { return place() + ".count"; });
      CheckIndex(d_.accessors[i].bufferView, views, "bufferViews", place, ".bufferView");
      if (!d_.accessors[i].sparse) continue;
      const GltfSparse& sparse = *d_.accessors[i].sparse;
      CheckIndex(sparse.indexView, views, "bufferViews", place, ".sparse.indices.bufferView");
      CheckIndex(sparse.valueView, views, "bufferViews", place, ".sparse.values.bufferView");
    }
    for (std::size_t i = 0; i < views; ++i) {
      const auto place = [i] { return fmt::format("bufferViews[{}]", i); };
      const GltfBufferView& view = d_.bufferViews[i];
      CheckSize(view.byteLength, [&] { return place() + ".byteLength"; });
      CheckIndex(view.buffer, d_.buffers.size(), "buffers", place, ".buffer");
      if (!view.meshopt) continue;
      CheckIndex(view.meshopt->buffer, d_.buffers.size(), "buffers", place,
                 ".extensions.EXT_meshopt_compression.buffer");
    }
  }

  void CheckScenes() const {
    CheckIndex(
        d_.scene, d_.scenes.size(), "scenes", [] { return std::string(); }, "scene");
    for (std::size_t i = 0; i < d_.scenes.size(); ++i) {
      CheckList(
          d_.scenes[i], d_.nodes.size(), "nodes", [i] { return fmt::format("scenes[{}]", i); },
          "nodes");
    }
  }

  /// Roots are no node's children, and each is named once.
  void CheckRoots() const {
    std::vector<std::size_t> namedBy(d_.nodes.size(), d_.scenes.size());
    for (std::size_t i = 0; i < d_.scenes.size(); ++i) {
      for (std::size_t k = 0; k < d_.scenes[i].size(); ++k) {
        const auto root = static_cast<std::size_t>(d_.scenes[i][k]);
        const auto place = [&] { return fmt::format("scenes[{}].nodes[{}]", i, k); };
        if (namedBy[root] == i) Fail(place(), fmt::format("names nodes[{}] once more", root));
        namedBy[root] = i;
        if (d_.nodes[root].parent == kNoGltfIndex) continue;
        Fail(place(),
             fmt::format("nodes[{}] is a child of nodes[{}]", root, d_.nodes[root].parent));
      }
    }
  }

  /// Sets the parents, and finds the nodes that no root leads to.
  void FindParents() {
    for (std::size_t i = 0; i < d_.nodes.size(); ++i) {
      for (std::size_t k = 0; k < d_.nodes[i].children.size(); ++k) {
        const int child = d_.nodes[i].children[k];
        int& parent = d_.nodes[static_cast<std::size_t>(child)].parent;
        if (parent != kNoGltfIndex) {
          Fail(fmt::format("nodes[{}].children[{}]", i, k),
               fmt::format("nodes[{}] is a child of nodes[{}] already", child, parent));
        }
        parent = static_cast<int>(i);
      }
    }
    // Each has one parent, so that whatever no root leads to is a ring or hangs on one.
    std::vector<bool> isBelowRoot(d_.nodes.size());
    std::vector<int> visits;
    for (std::size_t i = 0; i < d_.nodes.size(); ++i) {
      if (d_.nodes[i].parent == kNoGltfIndex) visits.push_back(static_cast<int>(i));
    }
    while (!visits.empty()) {
      const auto i = static_cast<std::size_t>(visits.back());
      visits.pop_back();
      isBelowRoot[i] = true;
      visits.insert(visits.end(), d_.nodes[i].children.begin(), d_.nodes[i].children.end());
    }
    const auto lost = std::ranges::find(isBelowRoot, false);
    if (lost == isBelowRoot.end()) return;
    Fail(fmt::format("nodes[{}]", lost - isBelowRoot.begin()), "is recursive: it is below itself");
  }

  const std::string& path_;
  GltfDocument& d_;
};

}  // namespace

void CheckGltfDocument(const std::string& path, GltfDocument& document) {
  Checker(path, document).Run();
}

}  // namespace mapexport
