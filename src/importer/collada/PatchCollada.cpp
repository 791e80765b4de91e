// A Collada document in the form that the import library understands.
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <assimp/material.h>
#include <pugixml.hpp>

#include "importer/Patches.h"
#include "importer/text/XmlText.h"

namespace mapexport {
namespace {

using pugi::xml_node;

constexpr std::array<std::string_view, 7> kPrimitives{
    "triangles", "polylist", "polygons", "trifans", "tristrips", "lines", "linestrips"};

// Ids hold no blanks, so that these are no ids of the document's own.
constexpr const char* kNoMaterialId = "no material";
constexpr const char* kNoEffectId = "no effect";

std::string IdOf(xml_node node) {
  return node.attribute("id").value();
}

/// What an url attribute such as "#brick" refers to.
std::string Target(const pugi::xml_attribute& url) {
  std::string_view text = url.value();
  if (text.starts_with('#')) text.remove_prefix(1);
  return std::string(text);
}

/// A mesh's part with a material of its own, and an instance's use of a mesh.
using Parts = std::vector<xml_node>;
struct Instance {
  xml_node node;
  std::string geometry;
  /// The materials of the parts, empty for none.
  std::vector<std::string> materials;
  xml_node bindShape;  ///< null without a skin
};

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view WithoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

/// Drops the blanks before numbers.
class BlankDropper : public pugi::xml_tree_walker {
 public:
  bool for_each(xml_node& node) override {
    const std::string_view text = node.value();
    if (node.type() != pugi::node_pcdata || text.empty() ||
        kBlanks.find(text.front()) == std::string_view::npos)
      return true;
    const std::string numbers(WithoutLeadingBlanks(text));
    if (numbers.find_first_of("+-.0123456789") != 0) return true;
    node.set_value(numbers.c_str());
    hasDropped = true;
    return true;
  }
  bool hasDropped = false;
};

class Patcher {
 public:
  explicit Patcher(xml_node root) : root_(root) {}

  /// False when there is nothing to change.
  bool Run() {
    CollectLibraries();
    for (const xml_node library : Libraries({"library_visual_scenes", "library_nodes"})) {
      CollectInstances(library);
    }
    const bool isBlanked = DropLeadingBlanks();
    const bool isMoved = MoveTwoSidedMarks();
    const bool isPlaced = PlaceSkins();
    const bool isBound = BindMaterials();
    return isBlanked || isMoved || isPlaced || isBound;
  }

 private:
  /// False when there is nothing to change.
  bool BindMaterials() {
    if (materials_.empty()) return false;
    const bool hasMixedMesh = GiveMeshesToInstances();
    if (!needsBindings_ && !hasMixedMesh) return false;
    for (Instance& instance : instances_) Bind(instance);
    for (const auto& [id, geometry] : geometries_) NumberSymbols(geometry);
    AddNoMaterial();
    return true;
  }

  std::vector<xml_node> Libraries(std::initializer_list<std::string_view> names) const {
    std::vector<xml_node> libraries;
    for (const xml_node child : root_.children()) {
      if (std::ranges::find(names, std::string_view(child.name())) != names.end()) {
        libraries.push_back(child);
      }
    }
    return libraries;
  }

  void CollectLibraries() {
    std::set<std::string> effects;
    for (const xml_node library : Libraries({"library_effects"})) {
      for (const xml_node effect : library.children("effect")) effects.insert(IdOf(effect));
    }
    for (const xml_node library : Libraries({"library_materials"})) {
      for (const xml_node material : library.children("material")) {
        if (effects.contains(Target(material.child("instance_effect").attribute("url")))) {
          materials_.insert(IdOf(material));
        }
      }
    }
    for (const xml_node library : Libraries({"library_geometries"})) {
      for (const xml_node geometry : library.children("geometry")) {
        geometries_.emplace(IdOf(geometry), geometry);
      }
    }
    for (const xml_node library : Libraries({"library_controllers"})) {
      for (const xml_node controller : library.children("controller")) {
        controllers_.emplace(IdOf(controller), controller);
      }
    }
  }

  /// The library refuses colours with blanks before the first number, and crashes on weights.
  bool DropLeadingBlanks() {
    BlankDropper dropper;
    root_.traverse(dropper);
    return dropper.hasDropped;
  }

  /// The library sees marks within the common profile of an effect, not those behind it.
  bool MoveTwoSidedMarks() {
    bool hasMarks = false;
    for (const xml_node library : Libraries({"library_effects"})) {
      for (const xml_node effect : library.children("effect")) {
        xml_node profile = effect.child("profile_COMMON");
        for (const xml_node extra : effect.children("extra")) {
          for (const xml_node technique : extra.children("technique")) {
            if (!profile || !technique.child("double_sided").text().as_bool()) continue;
            profile.append_child("double_sided").text().set(true);
            hasMarks = true;
          }
        }
      }
    }
    return hasMarks;
  }

  static Parts PartsOf(xml_node geometry) {
    Parts parts;
    for (const xml_node child : geometry.child("mesh").children()) {
      if (std::ranges::find(kPrimitives, std::string_view(child.name())) != kPrimitives.end()) {
        parts.push_back(child);
      }
    }
    return parts;
  }

  void CollectInstances(xml_node library) {
    // Not by recursion: nodes may be nested deeper than the stack is.
    xml_node node = library.first_child();
    while (node && node != library) {
      const std::string_view name = node.name();
      if (name == "instance_geometry" || name == "instance_controller") {
        AddInstance(node);
      } else if (const xml_node child = node.first_child()) {
        node = child;
        continue;
      }
      while (node != library && !node.next_sibling()) node = node.parent();
      if (node != library) node = node.next_sibling();
    }
  }

  void AddInstance(xml_node node) {
    std::string mesh = Target(node.attribute("url"));
    xml_node skin;
    if (const auto controller = controllers_.find(mesh);
        controller != controllers_.end() && !geometries_.contains(mesh)) {
      skin = controller->second.child("skin");
      mesh = Target(controller->second.first_child().attribute("source"));
    }
    const auto geometry = geometries_.find(mesh);
    if (geometry == geometries_.end()) return;
    std::map<std::string, std::string> targets;
    for (const xml_node binding : BindingsOf(node).children("instance_material")) {
      targets[binding.attribute("symbol").value()] = Target(binding.attribute("target"));
    }
    Instance instance{node, std::move(mesh), {}, skin.child("bind_shape_matrix")};
    for (const xml_node part : PartsOf(geometry->second)) {
      const std::string symbol = part.attribute("material").value();
      const auto target = targets.find(symbol);
      // Some exporters bind nothing and name the material in the mesh.
      const std::string& wanted = target == targets.end() ? symbol : target->second;
      instance.materials.push_back(materials_.contains(wanted) ? wanted : std::string());
      needsBindings_ = needsBindings_ || !materials_.contains(wanted) ||
                       (materials_.contains(symbol) && symbol != wanted);
    }
    instances_.push_back(std::move(instance));
  }

  /// A skin's bind shape matrix places the mesh within its node; the library leaves it out. It
  /// becomes the last transform of the node, or of an inner one when something else hangs there.
  bool PlaceSkins() {
    constexpr std::string_view kIdentity = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";
    bool isAnyPlaced = false;
    for (const Instance& instance : instances_) {
      const std::string_view matrix = WithoutLeadingBlanks(instance.bindShape.text().get());
      if (matrix.empty() || matrix == kIdentity) continue;
      xml_node node = instance.node.parent();
      if (HasOtherContent(node, instance.node)) {
        const char* name = node.attribute("name").value();
        node = node.append_child("node");
        node.append_attribute("name").set_value(name);
        node.append_move(instance.node);
      }
      node.insert_child_before("matrix", instance.node).text().set(instance.bindShape.text().get());
      isAnyPlaced = true;
    }
    return isAnyPlaced;
  }

  static bool HasOtherContent(xml_node node, xml_node instance) {
    for (const xml_node child : node.children()) {
      const std::string_view name = child.name();
      if (child != instance && (name == "node" || name.starts_with("instance_"))) return true;
    }
    return false;
  }

  static xml_node BindingsOf(xml_node instance) {
    return instance.child("bind_material").child("technique_common");
  }

  /// Gives each instance with other materials than the first one of its mesh a copy of the mesh,
  /// where there are several parts. True when there is such an instance.
  bool GiveMeshesToInstances() {
    std::map<std::string, std::map<std::vector<std::string>, std::string>> idsOfMesh;
    bool isMixed = false;
    for (Instance& instance : instances_) {
      if (std::string_view(instance.node.name()) != "instance_geometry") continue;
      if (instance.materials.size() < 2) continue;
      auto& ids = idsOfMesh[instance.geometry];
      const auto [id, isNew] = ids.try_emplace(instance.materials, instance.geometry);
      if (isNew && ids.size() > 1) {
        id->second = instance.geometry + ' ' + std::to_string(ids.size());
        const xml_node original = geometries_.at(instance.geometry);
        xml_node copy = original.parent().append_copy(original);
        copy.attribute("id").set_value(id->second.c_str());
        geometries_.emplace(id->second, copy);
        isMixed = true;
      }
      instance.node.attribute("url").set_value(('#' + id->second).c_str());
    }
    return isMixed;
  }

  /// Binds the symbols that NumberSymbols makes.
  static void Bind(Instance& instance) {
    xml_node bindings = BindingsOf(instance.node);
    if (!bindings) {
      xml_node outer = instance.node.child("bind_material");
      if (!outer) outer = instance.node.append_child("bind_material");
      bindings = outer.append_child("technique_common");
    }
    while (bindings.remove_child("instance_material")) {
    }
    for (std::size_t i = 0; i < instance.materials.size(); ++i) {
      const std::string& id = instance.materials[i];
      xml_node binding = bindings.append_child("instance_material");
      binding.append_attribute("symbol").set_value(Symbol(i).c_str());
      binding.append_attribute("target").set_value(
          ('#' + (id.empty() ? std::string(kNoMaterialId) : id)).c_str());
    }
  }

  static std::string Symbol(std::size_t part) { return "part " + std::to_string(part); }

  static void NumberSymbols(xml_node geometry) {
    const Parts parts = PartsOf(geometry);
    for (std::size_t i = 0; i < parts.size(); ++i) {
      xml_node part = parts[i];
      part.remove_attribute("material");
      part.append_attribute("material").set_value(Symbol(i).c_str());
    }
  }

  void AddNoMaterial() {
    xml_node effect = root_.append_child("library_effects").append_child("effect");
    effect.append_attribute("id").set_value(kNoEffectId);
    effect.append_child("profile_COMMON");
    xml_node material = root_.append_child("library_materials").append_child("material");
    material.append_attribute("id").set_value(kNoMaterialId);
    material.append_attribute("name").set_value(AI_DEFAULT_MATERIAL_NAME);
    material.append_child("instance_effect")
        .append_attribute("url")
        .set_value(('#' + std::string(kNoEffectId)).c_str());
  }

  xml_node root_;
  std::set<std::string> materials_;             // those that the library will have
  std::map<std::string, xml_node> geometries_;  // by id
  std::map<std::string, xml_node> controllers_;
  std::vector<Instance> instances_;
  bool needsBindings_ = false;
};

}  // namespace

std::optional<std::string> PatchCollada(std::string_view text) {
  pugi::xml_document document;
  if (!document.load_buffer(text.data(), text.size())) return std::nullopt;
  if (!Patcher(document.child("COLLADA")).Run()) return std::nullopt;
  return XmlText(document);
}

}  // namespace mapexport
