#include "importer/ReadWithLibrary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <unordered_set>
#include <utility>

#include <assimp/IOSystem.hpp>
#include <assimp/Importer.hpp>
#include <assimp/commonMetaData.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/FileDefect.h"
#include "importer/Patches.h"
#include "importer/SideFiles.h"
#include "importer/SourceFile.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/text/HostText.h"
#include "scene/FileText.h"
#include "scene/SceneError.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

void Configure(Assimp::Importer& importer, const ImportOptions& options) {
  // The library would put geometry-only offsets into the matrix that children inherit.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION,
                           options.up != UpAxis::kAuto);
  // A model is the file that is named, not the other parts of its player.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_MD3_HANDLE_MULTIPART, false);
  // Files of bones alone would come with made-up meshes that show the bones.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
}

std::shared_ptr<Assimp::Importer> MakeImporter(const ImportOptions& options) {
  if (!options.keepLibraryScene) return std::make_shared<Assimp::Importer>();
  // Never destroyed, on purpose: the caller ends its process without looking back.
  return {new Assimp::Importer, [](Assimp::Importer*) {}};
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
bool IsProbe(std::string_view name) {
  constexpr std::array<std::string_view, 6> kProbedEndings{
      ".md5anim", ".md5camera", ".skin", "_animation.txt", ".shader", "colormap.lmp"};
  // Another way to the shaders of a game, cut to what the reader's buffer holds.
  if (name.find("/../scripts/") != std::string_view::npos) return true;
  return std::ranges::any_of(kProbedEndings,
                             [&](std::string_view ending) { return name.ends_with(ending); });
}

/// The given name without the folder of the scene, which readers put in front of it.
std::string WithoutFolder(const std::string& name, const std::string& path) {
  const std::string folder = fs::path(path).parent_path().string() + '/';
  return ValidUtf8(name.starts_with(folder) ? std::string_view(name).substr(folder.size())
                                            : std::string_view(name));
}

/// Whether a reader found nothing at all in the file. Readers of text skip what they don't
/// understand, so that any text would do.
bool IsEmpty(const aiScene& scene) {
  return scene.mNumMeshes == 0 && scene.mRootNode->mNumChildren == 0 && scene.mNumCameras == 0 &&
         scene.mNumLights == 0 && scene.mNumAnimations == 0;
}

/// The triangles that the scene's polygons are cut into when none is lost.
std::size_t WholeTriangles(const aiScene& scene) {
  std::size_t count = 0;
  if (scene.mMeshes == nullptr) return 0;
  for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
    const aiMesh* mesh = scene.mMeshes[m];
    if (mesh == nullptr || mesh->mFaces == nullptr) continue;
    for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
      const unsigned corners = mesh->mFaces[f].mNumIndices;
      if (corners >= 3) count += corners - 2;
    }
  }
  return count;
}

/// The FBX reader lists a bone twice when two of a mesh's bones have one name, and frees it twice.
void DropRepeatedBones(const aiScene& scene) {
  if (scene.mMeshes == nullptr) return;
  for (aiMesh* mesh : std::span(scene.mMeshes, scene.mNumMeshes)) {
    if (mesh == nullptr || mesh->mBones == nullptr) continue;
    std::unordered_set<const aiBone*> seen;
    for (aiBone*& bone : std::span(mesh->mBones, mesh->mNumBones)) {
      if (!seen.insert(bone).second) bone = nullptr;
    }
  }
}

std::string MetadataText(const aiScene& scene, const char* key) {
  aiString text;
  if (scene.mMetaData == nullptr || !scene.mMetaData->Get(key, text)) return {};
  return std::string(BytesOf(text));
}

/// Refuses the file for what breaks it, or else for `reason`.
[[noreturn]] void RefuseBroken(const std::string& path, const std::string& reason) {
  const std::string defect = FileDefect(path);
  RefuseFile(path, defect.empty() ? reason : defect);
}

/// The changed form of the file (Patches.h) that the library should read; null when it should read
/// the file itself. Counts in `scene` what is cut out.
std::shared_ptr<const ChangedFile> ChangedForm(const std::string& path, std::string_view beginning,
                                               LibraryScene& scene) {
  const std::string extension = FileExtension(path);
  std::optional<std::string> text;
  if (extension == ".gltf" && beginning.starts_with(kByteOrderMark)) {
    text = FileText(path).View();  // without the mark, which its JSON reader takes for a defect
  } else if (extension == ".dae" && !IsUtf16(beginning)) {
    text = PatchCollada(FileText(path).View());
  } else if (extension == ".x3d" && !IsUtf16(beginning)) {
    text = PatchX3d(FileText(path).View());
  } else if ((extension == ".ac" || extension == ".acc") && !IsUtf16(beginning)) {
    text = PatchAc3d(FileText(path).View());
  } else if (extension == ".ase" && !IsUtf16(beginning)) {
    if (std::optional<PatchedAse> patched = PatchAse(FileText(path).View())) {
      scene.cutShapes = patched->shapes;
      scene.cutBlocks = patched->others;
      text = std::move(patched->text);
    }
  }
  if (!text) return nullptr;
  return std::make_shared<const ChangedFile>(ChangedFile{path, std::move(*text)});
}

/// Whether a file that begins so is one of Blender 3 or later: "BLENDER-v300", "BLENDER17-01v0500",
/// or compressed in the way that came with it.
bool IsNewBlend(const std::string& path, std::string_view beginning) {
  constexpr int kFirstNew = 300;
  if (FileExtension(path) == ".blend" && beginning.starts_with("\x28\xB5\x2F\xFD")) return true;
  constexpr std::string_view kMark = "BLENDER";
  const std::string_view header = beginning.substr(0, std::string_view("BLENDER17-01v0500").size());
  const std::size_t v = header.find_first_of("vV", kMark.size());
  if (!header.starts_with(kMark) || v == std::string_view::npos) return false;
  int version = 0;
  std::from_chars(header.data() + v + 1, header.data() + header.size(), version);
  return version >= kFirstNew;
}

}  // namespace

std::string LibraryScene::Text(const aiString& text) const {
  return Text(BytesOf(text));
}

std::string LibraryScene::Text(std::string_view bytes) const {
  return ValidUtf8(hasEntities ? DecodeEntities(bytes) : std::string(bytes));
}

LibraryScene ReadWithLibrary(const std::string& path, const ImportOptions& options) {
  const std::string beginning = FileBeginning(path);
  // Of packed maps the library reads one, and its indices wrongly; of a map alone nothing.
  if (const std::string extension = FileExtension(path);
      extension == ".bsp" || extension == ".pk3") {
    RefuseFile(path, fmt::format("game maps ({}) are not read", extension));
  }
  if (IsNewBlend(path, beginning)) {
    RefuseFile(path, "is newer than this reader knows; export FBX or glTF, or use the add-on");
  }

  LibraryScene result;
  const auto files = std::make_shared<FileRecord>();
  const std::shared_ptr<Assimp::Importer> importer = MakeImporter(options);
  importer->SetIOHandler(MakeRecordingFiles(files, ChangedForm(path, beginning, result)).release());
  Configure(*importer, options);
  const aiScene* scene = importer->ReadFile(path, 0);
  if (scene != nullptr) {
    DropRepeatedBones(*scene);
    const std::size_t triangles = WholeTriangles(*scene);
    scene = importer->ApplyPostProcessing(aiProcess_Triangulate);
    if (scene != nullptr)
      result.cutCorners = triangles - std::min(triangles, WholeTriangles(*scene));
  }
  if (IsUtf16(beginning) && (scene == nullptr || scene->mNumMeshes == 0)) RefuseUtf16(path);
  if (scene == nullptr) RefuseBroken(path, ReasonFrom(importer->GetErrorString()));
  if (scene->mRootNode == nullptr) RefuseFile(path, "holds no nodes");

  result.path = path;
  result.format = FormatOfReader(MetadataText(*scene, AI_METADATA_SOURCE_FORMAT));
  // Later versions put an FBX file's axes and unit there, which AxesAndUnits applies.
  if (result.format == SourceFormat::kFbx) scene->mRootNode->mTransformation = aiMatrix4x4();
  result.isFromBlender = result.format == SourceFormat::kFbx &&
                         MetadataText(*scene, AI_METADATA_SOURCE_GENERATOR).starts_with("Blender");
  if (result.format == SourceFormat::kAse && scene->mNumMeshes == 0) {
    // Its reader takes anything, and puts up with an end anywhere before the first mesh.
    if (const std::string defect = FileDefect(path); !defect.empty()) RefuseFile(path, defect);
  }
  if (IsEmpty(*scene)) {
    RefuseBroken(path, "holds nothing that belongs to a scene");
  }
  result.hasEntities =
      result.format == SourceFormat::kFbx && !beginning.starts_with("Kaydara FBX Binary");
  result.scene = std::shared_ptr<const aiScene>(importer, scene);
  for (const std::string& name : files->Missing()) {
    if (!IsProbe(name)) result.missingFiles.push_back(WithoutFolder(name, path));
  }
  for (const std::string& name : files->Opened()) {
    if (name != path) result.sideFiles.push_back(name);
  }
  return result;
}

LibraryScene ReadFbxText(const LibraryScene& original, const std::string& text,
                         const ImportOptions& options) {
  const std::shared_ptr<Assimp::Importer> importer = MakeImporter(options);
  Configure(*importer, options);
  const aiScene* scene =
      importer->ReadFileFromMemory(text.data(), text.size(), aiProcess_Triangulate, "fbx");
  if (scene == nullptr) RefuseFile(original.path, ReasonFrom(importer->GetErrorString()));
  LibraryScene result;
  result.path = original.path;
  result.format = original.format;
  result.hasEntities = original.hasEntities;
  result.isFromBlender = original.isFromBlender;
  result.scene = std::shared_ptr<const aiScene>(importer, scene);
  return result;
}

}  // namespace mapexport
