// The user-defined property text of a foreign node.
#include "importer/rebuild/UserProperties.h"

#include <string_view>

#include <assimp/scene.h>

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

}  // namespace

std::string UserPropertyText(const LibraryScene& source, const aiNode& node) {
  if (source.format != SourceFormat::kFbx) return {};
  // The same text twice; the second one under the modelling application's own name.
  const std::string_view text = FindText(node.mMetaData, "UserProperties");
  return source.Text(text.empty() ? FindText(node.mMetaData, "UDP3DSMAX") : text);
}

}  // namespace mapexport
