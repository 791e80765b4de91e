// An X3D document in the form that the import library understands.
#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>

#include <pugixml.hpp>

#include "importer/Patches.h"
#include "importer/text/XmlText.h"

namespace mapexport {
namespace {

using pugi::xml_node;

/// Bytes that copies may add.
constexpr std::size_t kMostCopied = std::size_t{256} << 20;

bool IsGroup(xml_node node) {
  constexpr std::array<std::string_view, 8> kGroups{
      "Anchor", "Billboard", "Collision", "Group", "LOD", "StaticGroup", "Switch", "Transform"};
  return std::ranges::find(kGroups, std::string_view(node.name())) != kGroups.end();
}

/// Adds up what a copy of an element takes.
class SizeMeter : public pugi::xml_tree_walker {
 public:
  bool for_each(xml_node& node) override {
    constexpr std::size_t kNode = 64;
    bytes += kNode;
    for (const pugi::xml_attribute attribute : node.attributes()) {
      bytes += kNode + std::string_view(attribute.value()).size();
    }
    return true;
  }
  std::size_t bytes = 0;
};

class Patcher {
 public:
  /// False when there is nothing to change. Not by recursion: elements may be nested deeper than
  /// the stack is.
  bool Run(xml_node node) {
    while (node) {
      if (IsGroup(node) && node.attribute("USE")) {
        node = Replaced(node);
      } else {
        if (const pugi::xml_attribute name = node.attribute("DEF")) definitions_[name.value()] = {};
        if (const xml_node child = node.first_child()) {
          node = child;
          continue;
        }
        Close(node);
      }
      while (node && !node.next_sibling()) {
        node = node.parent();
        Close(node);
      }
      if (node) node = node.next_sibling();
    }
    return hasChanged_;
  }

 private:
  void Close(xml_node node) {
    if (const pugi::xml_attribute name = node.attribute("DEF")) definitions_[name.value()] = node;
  }

  /// The copy in place of `use`, or `use` itself when what it names isn't there. It is emptied when
  /// it is within what it names.
  xml_node Replaced(xml_node use) {
    const auto found = definitions_.find(use.attribute("USE").value());
    if (found == definitions_.end()) return use;
    hasChanged_ = true;
    xml_node original = found->second;
    if (!original) {
      use.remove_attributes();
      return use;
    }
    SizeMeter meter;
    original.traverse(meter);
    copied_ += meter.bytes;
    if (copied_ > kMostCopied) throw std::length_error("its groups are used again too often (USE)");
    const xml_node copy = use.parent().insert_copy_before(original, use);
    use.parent().remove_child(use);
    return copy;
  }

  std::unordered_map<std::string, xml_node> definitions_;  // the latest; null while it is open
  std::size_t copied_ = 0;
  bool hasChanged_ = false;
};

}  // namespace

std::optional<std::string> PatchX3d(std::string_view text) {
  pugi::xml_document document;
  if (!document.load_buffer(text.data(), text.size())) return std::nullopt;
  if (!Patcher().Run(document.document_element())) return std::nullopt;
  return XmlText(document);
}

}  // namespace mapexport
