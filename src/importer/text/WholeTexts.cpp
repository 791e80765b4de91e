#include "importer/text/WholeTexts.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include <assimp/types.h>
#include <simdjson.h>

#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxLinks.h"
#include "importer/text/HostText.h"
#include "importer/text/Numbers.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

constexpr std::size_t kLongestOfLibrary = sizeof(aiString::data) - 1;

std::string KeyOf(const std::string& nodeName, std::string_view cut) {
  std::string key = nodeName;
  key += '\0';
  return key += cut;
}

/// The JSON of a glTF file, binary or not; empty when that is cut.
std::string_view JsonOf(std::string_view file) {
  constexpr std::size_t kJsonSizeAt = 12;
  constexpr std::size_t kJsonAt = 20;
  if (!file.starts_with("glTF")) return file;
  const std::optional<std::uint32_t> size = NumberAt<std::uint32_t>(file, kJsonSizeAt);
  return size && file.size() > kJsonAt ? file.substr(kJsonAt, *size) : std::string_view{};
}

}  // namespace

std::optional<std::string> WholeTexts::Find(const std::string& nodeName, std::string_view cut) {
  if (!std::exchange(isRead_, true)) Read();
  const auto found = texts_.find(KeyOf(nodeName, cut));
  return found == texts_.end() ? std::nullopt : found->second;
}

void WholeTexts::Read() {
  const FileText file(source_.path);
  if (source_.format == SourceFormat::kFbx) {
    ReadFbx(file.View());
  } else if (source_.format == SourceFormat::kGltf2) {
    ReadGltf(JsonOf(file.View()));
  }
}

void WholeTexts::ReadFbx(std::string_view file) {
  const std::optional<FbxLinks> links = ReadFbxLinks(file);
  if (!links) return;
  for (const FbxObject& object : links->objects) Add(source_.Text(object.name), object.userText);
}

void WholeTexts::ReadGltf(std::string_view json) {
  simdjson::dom::parser parser;
  simdjson::dom::array nodes;
  if (parser.parse(json.data(), json.size())["nodes"].get(nodes) != simdjson::SUCCESS) return;
  for (const simdjson::dom::element node : nodes) {
    std::string_view name;
    std::string_view text;
    if (node["name"].get(name) != simdjson::SUCCESS) continue;
    if (node["extras"][kGltfTextMember].get(text) != simdjson::SUCCESS) continue;
    Add(ValidUtf8(name), text);
  }
}

void WholeTexts::Add(const std::string& nodeName, std::string_view text) {
  if (text.size() <= kLongestOfLibrary) return;
  const std::string key = KeyOf(nodeName, text.substr(0, kLongestOfLibrary));
  const auto [entry, isNew] = texts_.try_emplace(key, text);
  if (!isNew && entry->second != text) entry->second.reset();
}

}  // namespace mapexport
