// The user-defined property text of a foreign node.
#include "importer/UserProperties.h"

#include <span>
#include <string_view>

#include <assimp/scene.h>

#include "importer/LibraryValues.h"
#include "importer/ReadWithLibrary.h"

namespace mapexport {
namespace {

constexpr std::string_view kGltfTextMember = "userProperties";

std::size_t PropertyCount(const aiMetadata* metadata) {
  if (metadata == nullptr || metadata->mKeys == nullptr || metadata->mValues == nullptr) return 0;
  return metadata->mNumProperties;
}

const aiString* AsText(const aiMetadataEntry& entry) {
  if (entry.mType != AI_AISTRING || entry.mData == nullptr) return nullptr;
  return static_cast<const aiString*>(entry.mData);
}

bool IsTrue(const aiMetadataEntry& entry) {
  return entry.mType == AI_BOOL && entry.mData != nullptr && *static_cast<const bool*>(entry.mData);
}

/// The node's first text of that name that isn't empty.
std::string FindText(const LibraryScene& source, const aiMetadata* metadata, std::string_view key) {
  for (std::size_t i = 0; i < PropertyCount(metadata); ++i) {
    if (BytesOf(metadata->mKeys[i]) != key) continue;
    const aiString* text = AsText(metadata->mValues[i]);
    if (text != nullptr && text->length > 0) return source.Text(*text);
  }
  return {};
}

std::string GltfText(const LibraryScene& source, const aiMetadata* extras) {
  std::string text = FindText(source, extras, kGltfTextMember);
  for (std::size_t i = 0; i < PropertyCount(extras); ++i) {
    if (!IsTrue(extras->mValues[i])) continue;
    if (!text.empty() && !text.ends_with('\n')) text += "\r\n";
    text += source.Text(extras->mKeys[i]) + "\r\n";
  }
  return text;
}

}  // namespace

std::string UserPropertyText(const LibraryScene& source, const aiNode& node) {
  switch (source.format) {
    case SourceFormat::kFbx: {
      // The same text twice; the second one under the modelling application's own name.
      std::string text = FindText(source, node.mMetaData, "UserProperties");
      return text.empty() ? FindText(source, node.mMetaData, "UDP3DSMAX") : text;
    }
    case SourceFormat::kGltf2:
      return GltfText(source, node.mMetaData);
    default:
      return {};
  }
}

}  // namespace mapexport
