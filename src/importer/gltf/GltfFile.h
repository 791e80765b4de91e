// The container of a glTF file: .gltf or .glb.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "scene/FileText.h"

namespace mapexport {

/// A glTF file in memory, taken apart.
class GltfFile {
 public:
  /// Reads the file at `path`, a binary one when it begins with "glTF". Throws SceneError for a
  /// binary file whose header or chunks don't fit into it, or of another version than 2.
  explicit GltfFile(const std::string& path);

  const std::string& Path() const { return path_; }
  std::string_view Json() const { return json_; }
  /// The binary chunk; empty when there is none.
  std::optional<std::string_view> Binary() const { return binary_; }
  /// Whether the document says that it is of version 1. The text need not be sound.
  bool IsVersion1() const;

 private:
  void SplitBinary(std::string_view bytes);

  std::string path_;
  FileText text_;
  std::string_view json_;
  std::optional<std::string_view> binary_;
};

/// Whether a file that is so named or begins so is read as glTF.
bool IsGltf(const std::string& path, std::string_view beginning);

}  // namespace mapexport
