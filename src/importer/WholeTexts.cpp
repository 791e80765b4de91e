#include "importer/WholeTexts.h"

#include <cstddef>
#include <utility>

#include <assimp/types.h>
#include <simdjson.h>

#include "importer/FbxLinks.h"
#include "importer/GltfDefect.h"
#include "importer/HostText.h"
#include "importer/ReadWithLibrary.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

constexpr std::size_t kLongestOfLibrary = sizeof(aiString::data) - 1;

}  // namespace

std::optional<std::string> WholeTexts::Find(const std::string& nodeName, std::string_view cut) {
  if (!std::exchange(isRead_, true)) Read();
  const Text* found = nullptr;
  for (const Text& text : texts_) {
    if (text.node != nodeName || !text.bytes.starts_with(cut)) continue;
    if (found != nullptr && found->bytes != text.bytes) return std::nullopt;
    found = &text;
  }
  if (found == nullptr) return std::nullopt;
  return found->bytes;
}

void WholeTexts::Read() {
  const FileText file(source_.path);
  const std::string_view bytes = file.View();
  if (source_.format == SourceFormat::kFbx) {
    ReadFbx(bytes);
  } else if (source_.format == SourceFormat::kGltf2) {
    ReadGltf(bytes.starts_with("glTF") ? BinaryGltfJson(bytes) : bytes);
  }
}

void WholeTexts::ReadFbx(std::string_view file) {
  const std::optional<FbxLinks> links = ReadFbxLinks(file);
  if (!links) return;
  for (const FbxObject& object : links->objects) {
    if (object.userText.size() <= kLongestOfLibrary) continue;
    texts_.push_back({ValidUtf8(source_.hasEntities ? DecodeEntities(object.name) : object.name),
                      object.userText});
  }
}

void WholeTexts::ReadGltf(std::string_view json) {
  simdjson::dom::parser parser;
  simdjson::dom::array nodes;
  if (parser.parse(json.data(), json.size())["nodes"].get(nodes) != simdjson::SUCCESS) return;
  for (const simdjson::dom::element node : nodes) {
    std::string_view text;
    const auto member = node["extras"][kGltfTextMember];
    if (member.get(text) != simdjson::SUCCESS || text.size() <= kLongestOfLibrary) continue;
    std::string_view name;
    if (node["name"].get(name) != simdjson::SUCCESS) continue;
    texts_.push_back({ValidUtf8(name), std::string(text)});
  }
}

}  // namespace mapexport
