#include "importer/ImportScene.h"

#include <exception>
#include <new>
#include <string_view>

#include <fmt/format.h>

#include "importer/FinishScene.h"
#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/SourceFile.h"
#include "importer/gltf/GltfFile.h"
#include "importer/gltf/ImportGltf.h"
#include "importer/obj/ImportObj.h"
#include "importer/rebuild/RebuildScene.h"
#include "importer/text/HostText.h"
#include "scene/SceneError.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

constexpr std::string_view kRootName = "Scene Root";

/// False when the file is no glTF file, or of version 1, which the library reads.
bool ImportAsGltf(const std::string& path, const ImportOptions& options, ImportedScene& result,
                  LeftOut& leftOut) {
  const std::string beginning = FileBeginning(path);
  if (!IsGltf(path, beginning)) return false;
  if (IsUtf16(beginning)) RefuseUtf16(path);
  const GltfFile file(path);
  if (file.IsVersion1()) return false;
  ImportGltf(file, options, result, leftOut);
  return true;
}

void ImportWithLibrary(const std::string& path, const ImportOptions& options, ImportedScene& result,
                       LeftOut& leftOut) {
  const LibraryScene source = ReadWithLibrary(path, options);
  // An OBJ file by another name shows only by what it holds.
  if (source.format == SourceFormat::kObj) return ImportObj(path, options, result, leftOut);
  if (options.onRead) options.onRead();
  RebuildScene(source, options, result, leftOut);
}

ImportedScene Import(const std::string& path, const ImportOptions& options) {
  ImportedScene result;
  result.scene.root.name = kRootName;
  LeftOut leftOut;
  if (IsObjPath(path)) {
    ImportObj(path, options, result, leftOut);
  } else if (!ImportAsGltf(path, options, result, leftOut)) {
    ImportWithLibrary(path, options, result, leftOut);
  }
  FinishScene(result, leftOut);
  return result;
}

}  // namespace

ImportedScene ImportScene(const std::string& path, const ImportOptions& options) {
  try {
    return Import(path, options);
  } catch (const SceneError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw SceneError(path + ": needs more memory to read than there is");
  } catch (const std::exception& error) {
    throw SceneError(fmt::format("{}: {}", path, FirstLine(error.what())));
  } catch (...) {
    throw SceneError(path + ": the reader failed without a reason");
  }
}

}  // namespace mapexport
