// A scene file read by the import library, as the library gives it.
#include "importer/ReadWithLibrary.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include <assimp/IOSystem.hpp>
#include <assimp/Importer.hpp>
#include <assimp/commonMetaData.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/HostText.h"
#include "importer/LibraryValues.h"
#include "importer/SideFiles.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

/// The file's first bytes. Refuses what no reader should be given at all.
std::string ReadBeginning(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) Refuse(path, "no such file");
  if (error) Refuse(path, error.message());
  if (status.type() == fs::file_type::directory) Refuse(path, "is a folder, not a file");
  if (status.type() != fs::file_type::regular) Refuse(path, "is not a regular file");

  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file)
    Refuse(path, fmt::format("can't be opened: {}", std::generic_category().message(errno)));
  std::array<char, 32> bytes{};
  file.read(bytes.data(), bytes.size());
  if (file.bad()) Refuse(path, "can't be read");
  if (file.gcount() == 0) Refuse(path, "the file is empty");
  return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

bool IsUtf16(std::string_view beginning) {
  return beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF");
}

void Configure(Assimp::Importer& importer) {
  // The library would put geometry-only offsets into the matrix that children inherit.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, false);
  // Files of bones alone would come with made-up meshes that show the bones.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
}

/// The library's error as a person can use it.
std::string ReasonFrom(std::string_view error) {
  if (error.find("No suitable reader found") != std::string_view::npos) {
    return "not a scene file of a known format";
  }
  if (error.find("std::bad_alloc") != std::string_view::npos) {
    return "needs more memory to read than there is";
  }
  std::string reason = FirstLine(error);
  if (reason.empty()) return "the reader refused it without a reason";
  if (reason.find("unsupported, old format version") != std::string::npos) {
    reason += "; save it as FBX 2011 or later";
  }
  return reason;
}

/// Whether `name` is no file that the scene names but one that the reader tries on its own.
bool IsProbe(const std::string& name, const std::string& path, SourceFormat format,
             std::size_t missingCount) {
  constexpr std::array<std::string_view, 4> kProbedEndings{".md5anim", ".md5camera", ".skin",
                                                           "_animation.txt"};
  for (const std::string_view ending : kProbedEndings) {
    if (name.ends_with(ending)) return true;
  }
  // For a material library that is missing, the OBJ reader tries the one named like the scene.
  const fs::path own = fs::path(path).replace_extension(".mtl").filename();
  return format == SourceFormat::kObj && missingCount > 1 && fs::path(name).filename() == own;
}

/// The given name without the folder of the scene, which readers put in front of it.
std::string WithoutFolder(const std::string& name, const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string() + '/';
  return ValidUtf8(name.starts_with(folder) ? std::string_view(name).substr(folder.size())
                                            : std::string_view(name));
}

/// Whether a reader found nothing at all in the file. Readers of text skip what they don't
/// understand, so that any text would do; only a glTF document shows by its form what it is.
bool IsEmpty(const aiScene& scene) {
  return scene.mNumMeshes == 0 && scene.mRootNode->mNumChildren == 0 && scene.mNumCameras == 0 &&
         scene.mNumLights == 0 && scene.mNumAnimations == 0;
}

SourceFormat FormatOf(const aiScene& scene) {
  aiString reader;
  if (scene.mMetaData == nullptr || !scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, reader)) {
    return SourceFormat::kOtherYUp;
  }
  return FormatOfReader(BytesOf(reader));
}

}  // namespace

std::string LibraryScene::Text(const aiString& text) const {
  return ValidUtf8(hasEntities ? DecodeEntities(BytesOf(text)) : std::string(BytesOf(text)));
}

LibraryScene ReadWithLibrary(const std::string& path) {
  const std::string beginning = ReadBeginning(path);

  const auto missing = std::make_shared<MissingFiles>();
  const auto importer = std::make_shared<Assimp::Importer>();
  importer->SetIOHandler(MakeRecordingFiles(missing).release());
  Configure(*importer);
  const aiScene* scene = importer->ReadFile(path, aiProcess_Triangulate);
  if (scene == nullptr) Refuse(path, ReasonFrom(importer->GetErrorString()));
  if (scene->mRootNode == nullptr) Refuse(path, "holds no nodes");
  if (IsUtf16(beginning) && scene->mNumMeshes == 0) {
    Refuse(path, "is UTF-16 text, which is not understood; save it as UTF-8");
  }

  LibraryScene result;
  result.path = path;
  result.format = FormatOf(*scene);
  if (IsEmpty(*scene) && result.format != SourceFormat::kGltf2) {
    Refuse(path, "holds nothing that belongs to a scene");
  }
  result.hasEntities =
      result.format == SourceFormat::kFbx && !beginning.starts_with("Kaydara FBX Binary");
  result.scene = std::shared_ptr<const aiScene>(importer, scene);
  const std::vector<std::string>& names = missing->Names();
  for (const std::string& name : names) {
    if (!IsProbe(name, path, result.format, names.size())) {
      result.missingFiles.push_back(WithoutFolder(name, path));
    }
  }
  return result;
}

}  // namespace mapexport
