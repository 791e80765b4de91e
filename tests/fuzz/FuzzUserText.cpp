// User property texts: of foreign nodes as the importer takes them, and the exporter's keywords.

#include <array>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include <assimp/scene.h>

#include "exporter/geometry/FaceFlags.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/SceneRoundTrip.h"
#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/UserProperties.h"
#include "importer/text/HostText.h"
#include "importer/text/UserText.h"
#include "scene/HostScene.h"
#include "scene/NearKeywords.h"

namespace mapexport {
namespace {

constexpr std::array<const char*, 12> kKeys{"UserProperties",  "UDP3DSMAX",     "userProperties",
                                            "climbable",       "notcollidable", "floorface",
                                            "notcollidable3d", "notrendered",   "45plusfloor",
                                            "notshownplan",    "notrenderd",    "a\nfloorface"};

std::unique_ptr<aiNode> NodeOf(FuzzBytes& in) {
  auto node = std::make_unique<aiNode>();
  const std::uint32_t count = in.Below(7);
  if (count == 0) return node;
  node->mMetaData = aiMetadata::Alloc(count);
  for (unsigned i = 0; i < count; ++i) {
    const std::uint32_t key = in.Below(kKeys.size() + 1);
    const std::string name = key < kKeys.size() ? kKeys[key] : in.Text() + 'x';
    switch (in.Below(5)) {
      case 0:
        node->mMetaData->Set(i, name, aiString(in.UserText()));
        break;
      case 1:
        node->mMetaData->Set(i, name, in.OneIn(2));
        break;
      case 2:
        node->mMetaData->Set(i, name, static_cast<std::int32_t>(in.U8()));
        break;
      case 3: {  // as long as the library's texts can be, and beyond their end
        aiString text(std::string(sizeof(aiString::data) - 1 - in.Below(3), 'x'));
        if (in.OneIn(3)) text.length = in.U32();
        node->mMetaData->Set(i, name, text);
        break;
      }
      default:
        node->mMetaData->mKeys[i] = aiString(name);
        node->mMetaData->mValues[i].mType = AI_META_MAX;
        node->mMetaData->mValues[i].mData = nullptr;
    }
  }
  return node;
}

/// By the definition: each keyword that is one of the words between tabs and line ends.
std::uint32_t LiteralFlags(const std::string& text) {
  std::set<std::string> words;
  std::string word;
  for (const char c : text + '\n') {
    if (c != '\t' && c != '\n' && c != '\r') {
      word += c;
      continue;
    }
    words.insert(std::exchange(word, {}));
  }
  std::uint32_t flags = 0;
  for (const FaceFlagKeyword& entry : kFaceFlagKeywords) {
    if (words.contains(entry.keyword)) flags |= entry.bit;
  }
  return flags;
}

std::uint32_t ExportedFlags(const Scene& scene) {
  const HostScene host(scene);
  return FaceFlagsOf(host.GetRootNode());
}

std::uint32_t FlagsOf(const std::string& text) {
  Scene scene;
  scene.root.userProperties = text;
  return ExportedFlags(scene);
}

void CheckExporter(const Scene& scene) {
  Require(ExportedFlags(scene) == LiteralFlags(scene.root.userProperties),
          "flags are those of the words");
  for (const NearKeyword& near : FindNearKeywords(scene)) {
    Require(!IsKeyword(near.word), "a keyword is not nearly one");
    Require(near.keyword.empty() || IsKeyword(near.keyword), "what is proposed is a keyword");
    Describe(near);
  }
}

}  // namespace
}  // namespace mapexport

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  FuzzBytes all(data, size);
  FuzzBytes in = all.Part(all.U16());
  Scene scene;
  scene.root.userProperties = ValidUtf8(in.UserText());
  CheckExporter(scene);

  const MemoryFile file(all.Rest());
  LibraryScene source;
  source.path = file.Path();
  source.format = in.Pick(std::array{SourceFormat::kFbx, SourceFormat::kAse});
  source.hasEntities = in.OneIn(2);
  scene.root.name = ValidUtf8(in.Text());
  const auto node = NodeOf(in);
  UserPropertyReader reader(source);
  try {
    const std::string text = reader.TextOf(*node, scene.root.name);
    Require(ValidUtf8(text) == text, "texts are UTF-8 without NUL");
    scene.root.userProperties = text;
  } catch (const SceneError&) {
    return 0;
  }
  CheckExporter(scene);
  RequireRoundTrip(scene);
  UserText properties;
  properties.AddText(scene.root.userProperties);
  const std::uint32_t before = FlagsOf(properties.Text());
  const std::string name = in.Pick(kKeys);
  properties.AddProperty(name, PropertyOfText(ValidUtf8(in.UserText())));
  const PropertyValue value = PropertyOfNumber(static_cast<double>(in.Float()));
  properties.AddProperty(name, value);
  const bool isOn = IsKeyword(name) && value.sets == PropertyValue::Sets::kOn;
  const std::uint32_t wanted = isOn ? FlagsOf(name) : 0;
  Require((FlagsOf(properties.Text()) & (before | wanted)) == (before | wanted),
          "a property that is on adds its line, and none takes one away");
  ImportRemarks remarks;
  reader.AddRemarks(remarks);
  properties.AddRemarks(scene.root.name, remarks);
  return 0;
}
