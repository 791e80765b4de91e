#include "importer/text/WholeTexts.h"

#include <cstddef>
#include <utility>

#include <assimp/types.h>

#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxLinks.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

constexpr std::size_t kLongestOfLibrary = sizeof(aiString::data) - 1;

std::string KeyOf(const std::string& nodeName, std::string_view cut) {
  std::string key = nodeName;
  key += '\0';
  return key += cut;
}

}  // namespace

std::optional<std::string> WholeTexts::Find(const std::string& nodeName, std::string_view cut) {
  if (!std::exchange(isRead_, true)) Read();
  const auto found = texts_.find(KeyOf(nodeName, cut));
  return found == texts_.end() ? std::nullopt : found->second;
}

void WholeTexts::Read() {
  const FileText file(source_.path);
  if (source_.format == SourceFormat::kFbx) ReadFbx(file.View());
}

void WholeTexts::ReadFbx(std::string_view file) {
  const std::optional<FbxLinks> links = ReadFbxLinks(file);
  if (!links) return;
  for (const FbxObject& object : links->objects) Add(source_.Text(object.name), object.userText);
}

void WholeTexts::Add(const std::string& nodeName, std::string_view text) {
  if (text.size() <= kLongestOfLibrary) return;
  const std::string key = KeyOf(nodeName, text.substr(0, kLongestOfLibrary));
  const auto [entry, isNew] = texts_.try_emplace(key, text);
  if (!isNew && entry->second != text) entry->second.reset();
}

}  // namespace mapexport
