// What a person may decide about the reading of a foreign scene.
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
  /// Host units per unit that arrives (glTF, Collada: metre; others: the
  /// file's own), positive and finite; empty: 100 for glTF and Collada, else 1.
  std::optional<float> scale;
  /// Whether nodes that the file hides, with all below them, are left out. Else they are kept.
  bool skipHidden = false;
  /// Whether the import library's scene is left in memory for ever. For a child process that ends
  /// by _exit: destroying what a damaged file has become may crash.
  bool keepLibraryScene = false;
  /// Called once, when the file is read and the host's scene begins to be made of it. May be empty.
  std::function<void()> onRead = {};
};

}  // namespace mapexport
