// A scene of the import library made of any bytes, rebuilt as the host's scene.
//
// The library's readers have no part in it. The bytes behind the scene's are the file that it is
// said to come from, of which the importer takes what the library loses.

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <assimp/scene.h>

#include "fuzz/SceneRoundTrip.h"
#include "importer/FinishScene.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxLinks.h"
#include "importer/rebuild/RebuildScene.h"

namespace mapexport {
namespace {

constexpr std::array kFormats{
    SourceFormat::k3ds,      SourceFormat::kAc3d,       SourceFormat::kAse,
    SourceFormat::kCollada,  SourceFormat::kFbx,        SourceFormat::kGltf1,
    SourceFormat::kOff,      SourceFormat::kPly,        SourceFormat::kOtherYUp,
    SourceFormat::kOtherZUp, SourceFormat::kTurnedToYUp};

class SceneMaker {
 public:
  explicit SceneMaker(FuzzBytes& in) : in_(in), scene_(std::make_unique<aiScene>()) {}

  std::unique_ptr<aiScene> Make() {
    scene_->mNumMaterials = in_.Below(6);
    if (!in_.OneIn(16))
      scene_->mMaterials = List<aiMaterial>(scene_->mNumMaterials, &SceneMaker::Material);
    scene_->mNumMeshes = in_.Below(6);
    if (!in_.OneIn(16)) scene_->mMeshes = List<aiMesh>(scene_->mNumMeshes, &SceneMaker::Mesh);
    scene_->mNumTextures = in_.Below(3);
    if (!in_.OneIn(16))
      scene_->mTextures = List<aiTexture>(scene_->mNumTextures, &SceneMaker::Texture);
    scene_->mNumCameras = in_.Below(3);  // counts are all that anybody asks for
    scene_->mNumLights = in_.Below(3);
    scene_->mNumAnimations = in_.Below(3);
    if (in_.OneIn(2)) scene_->mMetaData = FileMetadata();
    Nodes();
    return std::move(scene_);
  }

 private:
  /// Entries may be missing.
  template <class T>
  T** List(unsigned count, T* (SceneMaker::*make)()) {
    auto list = std::make_unique<T*[]>(count);
    for (unsigned i = 0; i < count; ++i) list[i] = in_.OneIn(16) ? nullptr : (this->*make)();
    return list.release();
  }

  aiString Text() {
    constexpr std::array<const char*, 16> kTexts{"",
                                                 "Box",
                                                 "RootNode",
                                                 "DefaultMaterial",
                                                 "%%%DEFAULT",
                                                 "static yard",
                                                 "exclude",
                                                 "*0",
                                                 "*7",
                                                 "Box_$AssimpFbx$_Rotation",
                                                 "a\\..\\b.tga",
                                                 "a%20b.png",
                                                 "<root>",
                                                 "c:/x.y",
                                                 "$dummy_root",
                                                 "\xC3\xA4\xFF"};
    const std::uint32_t which = in_.Below(kTexts.size() + 2);
    if (which < kTexts.size()) return aiString(kTexts[which]);
    if (which == kTexts.size()) return aiString(in_.Text());
    return aiString(std::string(sizeof(aiString::data) - 1, 'n'));
  }
  /// A text whose length may be a lie. Those of materials never are: the library itself reads them.
  aiString AnyText() {
    aiString text = Text();
    if (in_.OneIn(16)) text.length = in_.U32();
    return text;
  }
  aiVector3D Vector() {
    const float x = in_.Float();
    const float y = in_.Float();
    return {x, y, in_.Float()};
  }

  aiMaterial* Material() {
    auto material = std::make_unique<aiMaterial>();
    struct Key {
      const char* name;
      unsigned kind, index;
    };
    constexpr std::array kKeys{Key{AI_MATKEY_NAME},
                               Key{AI_MATKEY_COLOR_AMBIENT},
                               Key{AI_MATKEY_COLOR_DIFFUSE},
                               Key{AI_MATKEY_COLOR_SPECULAR},
                               Key{AI_MATKEY_OPACITY},
                               Key{AI_MATKEY_SHININESS},
                               Key{AI_MATKEY_SHININESS_STRENGTH},
                               Key{AI_MATKEY_SHADING_MODEL},
                               Key{AI_MATKEY_TWOSIDED},
                               Key{AI_MATKEY_TEXTURE(aiTextureType_DIFFUSE, 0)},
                               Key{AI_MATKEY_TEXTURE(aiTextureType_BASE_COLOR, 0)},
                               Key{AI_MATKEY_UVTRANSFORM(aiTextureType_DIFFUSE, 0)}};
    for (std::uint32_t i = in_.Below(10); i > 0; --i) {
      const Key key = in_.Pick(kKeys);
      const auto add = [&](const auto* value, unsigned count) {
        material->AddProperty(value, count, key.name, key.kind, key.index);
      };
      // Readers differ in the types that they store; some are not what is asked for.
      switch (in_.Below(6)) {
        case 0: {
          const aiString text = Text();
          material->AddProperty(&text, key.name, key.kind, key.index);
          break;
        }
        case 1: {
          const auto number = static_cast<int>(in_.U32());
          add(&number, 1);
          break;
        }
        case 2: {
          const double number = static_cast<double>(in_.Float()) * 1e300;
          add(&number, 1);
          break;
        }
        case 3: {
          aiUVTransform transform;
          transform.mTranslation = {in_.Float(), in_.Float()};
          transform.mScaling = {in_.Float(), in_.Float()};
          transform.mRotation = in_.Float();
          add(&transform, 1);
          break;
        }
        default: {
          const std::array colour{in_.Float(), in_.Float(), in_.Float()};
          add(colour.data(), 1 + in_.Below(3));
        }
      }
    }
    return material.release();
  }

  /// Arrays are as long as the counts say; nothing else is promised.
  aiMesh* Mesh() {
    auto mesh = std::make_unique<aiMesh>();
    mesh->mMaterialIndex = in_.OneIn(8) ? in_.U32() : in_.Below(6);
    mesh->mNumVertices = in_.Below(20);
    const auto vectors = [&]() -> aiVector3D* {
      auto list = std::make_unique<aiVector3D[]>(mesh->mNumVertices);
      for (unsigned i = 0; i < mesh->mNumVertices; ++i) {
        list[i] = i > 0 && in_.OneIn(3) ? list[in_.Below(i)] : Vector();
      }
      return list.release();
    };
    const std::uint32_t has = in_.U8();
    if (has != 0xFF) mesh->mVertices = vectors();
    if ((has & 1) != 0) mesh->mNormals = vectors();
    if ((has & 2) != 0) mesh->mTextureCoords[0] = vectors();
    if ((has & 4) != 0) mesh->mTextureCoords[1] = vectors();
    if ((has & 8) != 0)
      mesh->mColors[0] = std::make_unique<aiColor4D[]>(mesh->mNumVertices).release();
    mesh->mNumUVComponents[0] = (has & 16) != 0 ? 3 : 2;
    mesh->mNumFaces = in_.Below(40);
    if ((has & 0xC0) != 0x40) mesh->mFaces = Faces(*mesh);
    return mesh.release();
  }
  aiFace* Faces(const aiMesh& mesh) {
    auto faces = std::make_unique<aiFace[]>(mesh.mNumFaces);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
      const std::uint32_t kind = in_.U8();
      faces[f].mNumIndices = kind < 0xF0 ? 3 : kind % 6;
      if (kind == 0xFF) continue;  // a count without indices
      faces[f].mIndices = std::make_unique<unsigned[]>(faces[f].mNumIndices).release();
      for (unsigned k = 0; k < faces[f].mNumIndices; ++k) {
        faces[f].mIndices[k] = kind < 0xE0 ? in_.Below(mesh.mNumVertices + 1) : in_.U32();
      }
    }
    return faces.release();
  }

  aiTexture* Texture() {
    auto texture = std::make_unique<aiTexture>();
    texture->mFilename = AnyText();
    for (char& c : texture->achFormatHint) c = static_cast<char>(in_.U8());
    return texture.release();
  }

  aiMetadata* FileMetadata() {
    constexpr std::array<const char*, 7> kKeys{"UpAxis",         "UpAxisSign", "FrontAxis",
                                               "FrontAxisSign",  "CoordAxis",  "CoordAxisSign",
                                               "UnitScaleFactor"};
    aiMetadata* metadata = aiMetadata::Alloc(kKeys.size());
    for (unsigned i = 0; i < kKeys.size(); ++i) {
      if (in_.OneIn(4))
        metadata->Set(i, kKeys[i], in_.Float());
      else
        metadata->Set(i, kKeys[i], static_cast<std::int32_t>(in_.Below(4)) - 1);
    }
    return metadata;
  }

  aiNode* Node() {
    auto node = std::make_unique<aiNode>();
    node->mName = AnyText();
    aiMatrix4x4& m = node->mTransformation;
    const std::uint32_t kind = in_.Below(4);
    if (kind == 1) m = aiMatrix4x4(Vector(), aiQuaternion(), Vector());
    if (kind == 2) {
      for (unsigned r = 0; r < 4; ++r) {
        for (unsigned c = 0; c < 4; ++c) m[r][c] = in_.Float();
      }
    }
    node->mNumMeshes = in_.Below(4);
    if (!in_.OneIn(16)) {
      node->mMeshes = std::make_unique<unsigned[]>(node->mNumMeshes).release();
      for (unsigned i = 0; i < node->mNumMeshes; ++i) {
        node->mMeshes[i] = in_.OneIn(16) ? in_.U32() : in_.Below(6);
      }
    }
    if (in_.OneIn(4)) {
      node->mMetaData = aiMetadata::Alloc(2);
      constexpr std::array<const char*, 4> kKeys{"UserProperties", "UDP3DSMAX", "userProperties",
                                                 "climbable"};
      node->mMetaData->Set(0, in_.Pick(kKeys), aiString(in_.UserText()));
      node->mMetaData->Set(1, in_.Pick(kKeys), in_.OneIn(2));
    }
    return node.release();
  }
  void Nodes() {
    std::vector<aiNode*> nodes{Node()};
    std::vector<std::vector<aiNode*>> children(1);
    scene_->mRootNode = nodes[0];
    for (std::uint32_t i = in_.Below(24); i > 0; --i) {
      // Chains now and then, since depth is limited; any node else.
      const bool isChain = in_.OneIn(40);
      for (std::uint32_t length = isChain ? 4 * in_.U8() : 1; length > 0; --length) {
        std::vector<aiNode*>& siblings =
            children[isChain ? nodes.size() - 1 : in_.Below(nodes.size())];
        nodes.push_back(isChain ? new aiNode : Node());
        siblings.push_back(nodes.back());
        if (in_.OneIn(32)) siblings.push_back(nullptr);
        children.emplace_back();
      }
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (children[i].empty()) continue;
      nodes[i]->mNumChildren = static_cast<unsigned>(children[i].size());
      nodes[i]->mChildren = std::make_unique<aiNode*[]>(children[i].size()).release();
      std::ranges::copy(children[i], nodes[i]->mChildren);
    }
  }

  FuzzBytes& in_;
  std::unique_ptr<aiScene> scene_;
};

}  // namespace
}  // namespace mapexport

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  FuzzBytes all(data, size);
  FuzzBytes in = all.Part(all.U16());
  const MemoryFile file(all.Rest());
  LibraryScene source;
  source.path = file.Path();
  source.format = in.Pick(kFormats);
  // For a real FBX file the importer would ask the library to read it once more.
  if (source.format == SourceFormat::kFbx && ReadFbxLinks(all.Rest())) return 0;
  source.hasEntities = in.OneIn(2);
  ImportOptions options;
  options.up = in.Pick(std::array{UpAxis::kAuto, UpAxis::kY, UpAxis::kZ});
  if (in.OneIn(3)) options.scale = std::max(std::abs(in.Finite()), 1e-30f);
  source.scene = SceneMaker(in).Make();
  ImportedScene imported;
  LeftOut leftOut;
  try {
    RebuildScene(source, options, imported, leftOut);
  } catch (const std::exception&) {
    return 0;
  }
  FinishScene(imported, leftOut);
  RequireRoundTrip(imported.scene);
  return 0;
}
