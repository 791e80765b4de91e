#include "importer/obj/ImportObj.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/SourceFile.h"
#include "importer/obj/ObjFile.h"
#include "importer/obj/ObjMesh.h"
#include "importer/obj/ReadMtlFile.h"
#include "importer/rebuild/AxesAndUnits.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/text/HostText.h"
#include "importer/text/StatementLines.h"
#include "scene/FileText.h"
#include "scene/SceneError.h"
#include "system/IsFinite.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> FindBeside(const fs::path& folder, const std::string& name) {
  std::string slashed = name;
  std::ranges::replace(slashed, '\\', '/');
  for (const fs::path& candidate :
       {fs::path(name), fs::path(slashed), fs::path(slashed).filename()}) {
    std::error_code error;
    const fs::path full = folder / candidate;
    if (!candidate.empty() && fs::is_regular_file(full, error)) return full.string();
  }
  return std::nullopt;
}

/// The files of one mtllib statement: mostly a single name, which may hold blanks; else several.
std::vector<std::string> LibraryFiles(const fs::path& folder, const std::string& statement) {
  if (FindBeside(folder, statement)) return {statement};
  std::vector<std::string> names;
  std::string_view rest = statement;
  bool isAnyThere = false;
  while (!rest.empty()) {
    names.emplace_back(TakeWord(rest));
    isAnyThere = isAnyThere || FindBeside(folder, names.back());
  }
  return isAnyThere ? names : std::vector{statement};
}

class MaterialFiles {
 public:
  MaterialFiles(const std::string& path, ImportedScene& result)
      : folder_(fs::path(path).parent_path()), result_(result) {}

  void Read(const std::string& statement) {
    for (const std::string& name : LibraryFiles(folder_, statement)) {
      const std::optional<std::string> found = FindBeside(folder_, name);
      if (found && std::ranges::find(result_.sideFiles, *found) != result_.sideFiles.end())
        continue;
      if (!found || !ReadFile(*found)) {
        isAnyMissing_ = true;
        Warn("missing-side-file",
             fmt::format("the file \"{}\" that the scene names can't be opened", FirstLine(name)));
      }
    }
  }

  /// Host materials by the names that the scene uses.
  std::vector<int> IndicesOf(const std::vector<std::string>& names) {
    std::vector<int> indices;
    std::size_t unknown = 0;
    std::string firstUnknown;
    for (const std::string& name : names) {
      const auto [entry, isNew] =
          materials_.indexOf.try_emplace(name, static_cast<int>(materials_.materials.size()));
      if (isNew) {
        materials_.materials.push_back(PlainMtlMaterial(name));
        if (unknown++ == 0) firstUnknown = FirstLine(name);
      }
      indices.push_back(entry->second);
    }
    if (unknown > 0 && !isAnyMissing_) {
      Warn("unknown-material",
           fmt::format("plain materials stand for {} that no .mtl file of the scene has (\"{}\"{})",
                       unknown, firstUnknown, unknown == 1 ? "" : ", ..."),
           unknown);
    }
    if (materials_.repeated > 0) {
      Warn("repeated-material",
           fmt::format("{} of materials that were defined before: the first one counts",
                       materials_.repeated == 1
                           ? "1 definition"
                           : fmt::format("{} definitions", materials_.repeated)),
           materials_.repeated);
    }
    if (materials_.unreadable > 0) {
      Warn("material-value",
           fmt::format("{} of materials can't be read and {} not set",
                       materials_.unreadable == 1 ? "1 value"
                                                  : fmt::format("{} values", materials_.unreadable),
                       materials_.unreadable == 1 ? "is" : "are"),
           materials_.unreadable);
    }
    return indices;
  }

  std::vector<SceneMaterial> Take() { return std::move(materials_.materials); }

 private:
  bool ReadFile(const std::string& path) {
    try {
      const FileText text(path);
      ReadMtlFile(text.View(), materials_);
    } catch (const SceneError&) {
      return false;
    }
    result_.sideFiles.push_back(path);
    return true;
  }

  void Warn(RemarkCode code, std::string text, std::size_t count = 1) {
    result_.remarks.push_back(MakeWarning(code, std::move(text), count));
  }

  fs::path folder_;
  ImportedScene& result_;
  MtlMaterials materials_;
  bool isAnyMissing_ = false;
};

ObjFile ReadFile(const std::string& path) {
  if (IsUtf16(FileBeginning(path))) RefuseUtf16(path);
  const FileText text(path);
  ObjFile file = ReadObjFile(path, text.View());
  if (file.positions.empty() && file.parts.empty()) {
    RefuseFile(path, "holds nothing that belongs to a scene");
  }
  return file;
}

void CountLeftOut(const ObjFile& file, LeftOut& leftOut) {
  leftOut.points += file.points;
  leftOut.lines += file.lines;
  leftOut.polygons += file.brokenPolygons;
  leftOut.curves += file.curves;
  leftOut.colours += file.colours;
  for (const Point3& position : file.positions) leftOut.vertices += IsFinite(position) ? 0u : 1u;
}

}  // namespace

bool IsObjPath(const std::string& path) {
  return FileExtension(path) == ".obj";
}

void ImportObj(const std::string& path, const ImportOptions& options, ImportedScene& result,
               LeftOut& leftOut) {
  const ObjFile file = ReadFile(path);
  if (options.onRead) options.onRead();
  CountLeftOut(file, leftOut);
  if (file.innerGroups > 0) {
    result.remarks.push_back(MakeNote(
        "object-groups",
        fmt::format("{} within objects {} not kept: an object is one node",
                    file.innerGroups == 1 ? "the name of 1 group"
                                          : fmt::format("the names of {} groups", file.innerGroups),
                    file.innerGroups == 1 ? "is" : "are"),
        file.innerGroups));
  }
  MaterialFiles materialFiles(path, result);
  for (const std::string& statement : file.materialLibraries) materialFiles.Read(statement);
  const std::vector<int> hostMaterials = materialFiles.IndicesOf(file.materialNames);
  MaterialTable materials(materialFiles.Take());

  const WorldPlacement placement =
      FindWorldPlacement(SourceFormat::kObj, nullptr, options, result.remarks);
  for (const ObjPart& part : file.parts) {
    SceneNode node;
    node.name = ValidUtf8(part.name);
    node.objectTransform = HostTransform(AffineMatrix{}, placement);
    ObjMesh made = MakeObjMesh(file, part, hostMaterials, leftOut);
    // Without a triangle it is a helper, since an empty mesh would end the exporters' walk.
    node.object = made.mesh == nullptr ? SceneObject::kHelper : SceneObject::kMesh;
    if (made.mesh != nullptr) node.material = materials.OfParts(made.partMaterials, node.name);
    node.mesh = std::move(made.mesh);
    result.scene.root.children.push_back(std::move(node));
  }
  result.scene.materials = materials.Take();
}

}  // namespace mapexport
