// The user-defined property text of a foreign node.
#include "importer/rebuild/UserProperties.h"

#include <optional>
#include <string_view>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/LibraryValues.h"
#include "scene/NearKeywords.h"

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

bool IsTrue(const aiMetadataEntry& entry) {
  return entry.mType == AI_BOOL && entry.mData != nullptr && *static_cast<const bool*>(entry.mData);
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
  switch (source.format) {
    case SourceFormat::kFbx: {
      // The same text twice; the second one under the modelling application's own name.
      const std::string_view text = FindText(metadata, "UserProperties");
      return text.empty() ? FindText(metadata, "UDP3DSMAX") : text;
    }
    case SourceFormat::kGltf2:
      return FindText(metadata, kGltfTextMember);
    default:
      return {};
  }
}

/// `text` and a line for each mark of the node.
std::string WithMarks(const LibraryScene& source, const aiMetadata* extras, std::string text) {
  if (source.format != SourceFormat::kGltf2) return text;
  for (std::size_t i = 0; i < PropertyCount(extras); ++i) {
    if (!IsTrue(extras->mValues[i])) continue;
    if (!text.empty() && !text.ends_with('\n')) text += "\r\n";
    text += source.Text(extras->mKeys[i]) + "\r\n";
  }
  return text;
}

/// A plain value that isn't `false`: what one might take for a set mark.
bool IsIdleMark(const aiMetadataEntry& entry) {
  return entry.mType != AI_BOOL && entry.mType != AI_AIMETADATA && entry.mType != AI_META_MAX;
}

}  // namespace

std::string UserPropertyText(const LibraryScene& source, const aiNode& node) {
  return WithMarks(source, node.mMetaData, source.Text(StoredText(source, node.mMetaData)));
}

std::string UserPropertyReader::TextOf(const aiNode& node, const std::string& nodeName) {
  const aiMetadata* const metadata = node.mMetaData;
  const std::string_view stored = StoredText(source_, metadata);
  std::optional<std::string> whole;
  if (stored.size() + 1 >= sizeof(aiString::data)) {
    whole = wholeTexts_.Find(nodeName, stored);
    if (!whole) Note(cutTexts_, nodeName, {});
  }
  if (source_.format == SourceFormat::kGltf2) {
    for (std::size_t i = 0; i < PropertyCount(metadata); ++i) {
      const std::string key = source_.Text(metadata->mKeys[i]);
      if (IsIdleMark(metadata->mValues[i]) && (IsKeyword(key) || !NearestKeyword(key).empty())) {
        Note(idleMembers_, nodeName, key);
      }
    }
  }
  return WithMarks(source_, metadata, source_.Text(whole ? std::string_view(*whole) : stored));
}

void UserPropertyReader::AddRemarks(Remarks& remarks) const {
  const auto others = [](const Finding& finding) {
    return finding.count == 1 ? std::string() : fmt::format(" and {} more", finding.count - 1);
  };
  if (cutTexts_.count > 0) {
    remarks.push_back(
        MakeWarning("cut-text",
                    fmt::format("the user property text of node \"{}\"{} is probably cut: the "
                                "reader keeps {} bytes of a text",
                                cutTexts_.node, others(cutTexts_), sizeof(aiString::data) - 1),
                    cutTexts_.count));
  }
  if (idleMembers_.count > 0) {
    remarks.push_back(
        MakeWarning("idle-member",
                    fmt::format("the extras member \"{}\" of node \"{}\"{} sets nothing, since "
                                "its value isn't true",
                                idleMembers_.detail, idleMembers_.node, others(idleMembers_)),
                    idleMembers_.count));
  }
}

void UserPropertyReader::Note(Finding& finding, const std::string& node,
                              const std::string& detail) {
  if (finding.count++ > 0) return;
  finding.node = node;
  finding.detail = detail;
}

}  // namespace mapexport
