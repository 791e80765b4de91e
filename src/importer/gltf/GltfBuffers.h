// The bytes that a glTF document refers to.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "importer/gltf/DecodeDraco.h"
#include "importer/gltf/GltfBudget.h"
#include "importer/gltf/GltfDocument.h"
#include "importer/gltf/GltfFile.h"

namespace mapexport {

/// Reads buffers when they are first asked for: the binary chunk, data URIs, and files that a URI
/// names as they stand or seen from the scene's folder, nothing else. Buffers and views are held
/// against each other's sizes. What is compressed is decoded once, whatever names it. Throws
/// SceneError, with the place in the document.
class GltfBuffers {
 public:
  /// All must outlive this object, and indices in `document` be in range. Files that are opened
  /// are added to `sideFiles`, what is read and decoded to `budget`.
  GltfBuffers(const GltfFile& file, const GltfDocument& document, GltfBudget& budget,
              std::vector<std::string>& sideFiles);

  /// The content of bufferViews[view], decompressed.
  std::string_view View(int view);
  /// What the Draco stream in bufferViews[view] holds; `user` is the place that names the view.
  const DracoMesh& Draco(int view, const std::string& user);

 private:
  std::string_view Buffer(int buffer, const std::string& user);
  std::string Load(std::size_t buffer);
  std::string LoadFile(std::size_t buffer, const std::string& uri);
  const std::string& Decompress(std::size_t view);
  std::string_view Part(int buffer, std::size_t offset, std::size_t length,
                        const std::string& place);

  const GltfFile& file_;
  const GltfDocument& document_;
  GltfBudget& budget_;
  std::vector<std::string>& sideFiles_;
  std::vector<std::optional<std::string>> buffers_;
  // By where the compressed bytes lie, and how they are to be decoded.
  using Bytes = std::pair<const char*, std::size_t>;
  std::map<std::tuple<Bytes, std::size_t, std::size_t, GltfMeshopt::Mode, GltfMeshopt::Filter>,
           std::string>
      decompressed_;
  std::map<Bytes, DracoMesh> draco_;
};

}  // namespace mapexport
