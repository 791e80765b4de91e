// The user-defined property text of a foreign node.
#include "importer/rebuild/UserProperties.h"

#include <optional>
#include <string_view>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/LibraryValues.h"

namespace mapexport {
namespace {

std::size_t PropertyCount(const aiMetadata* metadata) {
  if (metadata == nullptr || metadata->mKeys == nullptr || metadata->mValues == nullptr) return 0;
  return metadata->mNumProperties;
}

const aiString* AsText(const aiMetadataEntry& entry) {
  if (entry.mType != AI_AISTRING || entry.mData == nullptr) return nullptr;
  return static_cast<const aiString*>(entry.mData);
}

/// The first text of that name that isn't empty, as the library stores it.
std::string_view FindText(const aiMetadata* metadata, std::string_view key) {
  for (std::size_t i = 0; i < PropertyCount(metadata); ++i) {
    if (BytesOf(metadata->mKeys[i]) != key) continue;
    const aiString* text = AsText(metadata->mValues[i]);
    if (text != nullptr && text->length > 0) return BytesOf(*text);
  }
  return {};
}

/// The text that the node has of its own.
std::string_view StoredText(const LibraryScene& source, const aiMetadata* metadata) {
  if (source.format != SourceFormat::kFbx) return {};
  // The same text twice; the second one under the modelling application's own name.
  const std::string_view text = FindText(metadata, "UserProperties");
  return text.empty() ? FindText(metadata, "UDP3DSMAX") : text;
}

}  // namespace

std::string UserPropertyText(const LibraryScene& source, const aiNode& node) {
  return source.Text(StoredText(source, node.mMetaData));
}

std::string UserPropertyReader::TextOf(const aiNode& node, const std::string& nodeName) {
  const std::string_view stored = StoredText(source_, node.mMetaData);
  if (stored.size() + 1 < sizeof(aiString::data)) return source_.Text(stored);
  if (const std::optional<std::string> whole = wholeTexts_.Find(nodeName, stored)) {
    return source_.Text(*whole);
  }
  if (cutCount_++ == 0) firstCut_ = nodeName;
  return source_.Text(stored);
}

void UserPropertyReader::AddRemarks(Remarks& remarks) const {
  if (cutCount_ == 0) return;
  remarks.push_back(MakeWarning(
      "cut-text",
      fmt::format("the user property text of node \"{}\"{} is probably cut: the reader keeps {} "
                  "bytes of a text",
                  firstCut_, cutCount_ == 1 ? "" : fmt::format(" and {} more", cutCount_ - 1),
                  sizeof(aiString::data) - 1),
      cutCount_));
}

}  // namespace mapexport
