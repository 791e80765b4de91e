// The bytes that a glTF document refers to.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importer/gltf/GltfDocument.h"
#include "importer/gltf/GltfFile.h"

namespace mapexport {

/// Reads buffers when they are first asked for: the binary chunk, data URIs, and files that a URI
/// names as they stand or seen from the scene's folder, nothing else. Buffers and views are held
/// against each other's sizes. Throws SceneError, with the place in the document.
class GltfBuffers {
 public:
  /// Both must outlive this object, and indices in `document` be in range. Files that are opened
  /// are added to `sideFiles`.
  GltfBuffers(const GltfFile& file, const GltfDocument& document,
              std::vector<std::string>& sideFiles);

  /// The content of bufferViews[view], decompressed.
  std::string_view View(int view);
  /// Bytes of all that was read so far.
  std::size_t Size() const { return size_; }

 private:
  std::string_view Buffer(int buffer, const std::string& user);
  std::string Load(std::size_t buffer);
  std::string LoadFile(std::size_t buffer, const std::string& uri);
  std::string Decompress(std::size_t view);
  std::string_view Part(int buffer, std::size_t offset, std::size_t length,
                        const std::string& place);

  const GltfFile& file_;
  const GltfDocument& document_;
  std::vector<std::string>& sideFiles_;
  std::vector<std::optional<std::string>> buffers_;
  std::vector<std::optional<std::string>> decompressed_;  // by the view
  std::size_t size_;
};

}  // namespace mapexport
