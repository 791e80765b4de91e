// A scene file read by the import library, as the library gives it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "importer/ImportOptions.h"
#include "importer/SourceFormat.h"

struct aiScene;
struct aiString;

namespace mapexport {

/// The library's scene. Its root node is there; nothing else in it has been checked: pointers may
/// be null, indices out of range, numbers not finite.
struct LibraryScene {
  std::string path;  ///< as given
  SourceFormat format = SourceFormat::kOtherYUp;
  bool hasEntities = false;  ///< an ASCII FBX file: its texts still hold entities
  std::shared_ptr<const aiScene> scene;
  std::vector<std::string> missingFiles;  ///< that the reader asked for in vain and did without
  std::vector<std::string> sideFiles;     ///< that it read beside the scene, as paths to open

  std::size_t cutShapes = 0;  ///< curves of an ASE file, at which the library stops reading
  std::size_t cutBlocks = 0;  ///< and blocks of unknown kinds

  /// A text of this scene, or bytes of it, as valid UTF-8.
  std::string Text(const aiString& text) const;
  std::string Text(std::string_view bytes) const;
};

/// Reads the file at `path` with whichever reader of the library takes it. Polygons are
/// triangulated, nothing else is changed. When the options name the axis that is up, a Collada
/// file's own is not applied. Throws SceneError for a path that is no file, an empty file, UTF-16
/// text that the reader can't make sense of, a file in which it finds nothing, and whatever the
/// library refuses.
LibraryScene ReadWithLibrary(const std::string& path, const ImportOptions& options);

/// Reads `text`, another form of the FBX file that gave `original`. Throws SceneError.
LibraryScene ReadFbxText(const LibraryScene& original, const std::string& text,
                         const ImportOptions& options);

}  // namespace mapexport
