// The choices for reading a foreign scene.
#pragma once

#include <functional>
#include <optional>

namespace mapexport {

enum class UpAxis {
  kAuto,  ///< what the format or the file says
  kY,
  kZ
};

struct ImportOptions {
  UpAxis up = UpAxis::kAuto;  ///< the axis that points up in the file's own numbers
  /// Host units per unit of the file (per metre for glTF and Collada), positive and finite; empty:
  /// 100 for glTF, Collada and FBX files in metres, else 1.
  std::optional<float> scale;
  /// Whether nodes that the file hides, with all below them, are left out. Else they are kept.
  bool skipHidden = false;
  /// Whether the import library's scene is never freed. For a child process that ends by _exit:
  /// freeing the scene of a damaged file may crash.
  bool keepLibraryScene = false;
  /// Called once, after the file is read and before the host's scene is made of it. May be empty.
  std::function<void()> onRead = {};
};

}  // namespace mapexport
