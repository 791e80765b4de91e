#include "convert/ConvertModel.h"

#include <new>
#include <string_view>
#include <utility>

#include <assimp/Exporter.hpp>
#include <fmt/format.h>

#include "convert/MemoryFiles.h"
#include "convert/TargetScene.h"

namespace mapexport {
namespace {

// The library's error for a memory stream that could not grow.
constexpr std::string_view kStreamFailed = "output data creation failed";

}  // namespace

ConvertedModel ConvertModel(const ModelFile& model, const std::string& fileName,
                            const TargetFormat& format, const ExportedSpace& exported,
                            double hostUnits) {
  ConvertedModel result;
  const TargetSpace space(exported, format.yUp, hostUnits);
  // With its extension, because the library derives the side file's name from it.
  const auto scene = TargetScene(model, fileName, format, space, result.changes);
  // Without triangles the library writes files that break their formats' rules.
  if (!scene->HasMeshes()) {
    throw ConvertError(fmt::format("it has no triangle that a {} can show", format.extension));
  }

  Assimp::Exporter exporter;
  auto* const files = new MemoryFiles;  // the exporter deletes it
  exporter.SetIOHandler(files);
  const aiReturn done = exporter.Export(scene.get(), format.libraryId, fileName);
  const std::string reason = exporter.GetErrorString();
  if (done == aiReturn_OUTOFMEMORY || reason.starts_with(kStreamFailed)) throw std::bad_alloc();
  if (done != aiReturn_SUCCESS || !files->Files().contains(fileName)) {
    throw ConvertError(reason.empty() ? "the export library wrote nothing"
                                      : reason.substr(0, reason.find('\n')));
  }
  for (auto& [name, bytes] : files->Files()) {
    if (name != fileName) result.files.push_back({name, std::move(bytes)});
  }
  result.files.push_back({fileName, std::move(files->Files().at(fileName))});
  return result;
}

}  // namespace mapexport
