// Reads a scene file with the import library.
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

/// The library's scene. Only the root node is known to exist: pointers may be null, indices out of
/// range, numbers not finite.
struct LibraryScene {
  std::string path;  ///< as given
  SourceFormat format = SourceFormat::kOtherYUp;
  bool hasEntities = false;    ///< an ASCII FBX file: its texts still hold entities
  bool isFromBlender = false;  ///< an FBX file that Blender has written
  std::shared_ptr<const aiScene> scene;
  std::vector<std::string> missingFiles;  ///< that the reader asked for and didn't get
  std::vector<std::string> sideFiles;     ///< that it read beside the scene, as paths to open

  std::size_t cutShapes = 0;   ///< curves that PatchAse cut out
  std::size_t cutBlocks = 0;   ///< blocks of unknown kinds that it cut out
  std::size_t cutCorners = 0;  ///< of polygons, each a triangle that the library didn't make

  /// A text of this scene, or bytes of it, as valid UTF-8.
  std::string Text(const aiString& text) const;
  std::string Text(std::string_view bytes) const;
};

/// Reads the file at `path` with the library's reader for its format. Polygons are triangulated,
/// nothing else is changed. When the options name the axis that is up, a Collada file's own is
/// ignored. Throws SceneError for a path that is no file, an empty file, UTF-16 text that the
/// reader doesn't understand, a file in which it finds nothing, and any file that the library
/// refuses.
LibraryScene ReadWithLibrary(const std::string& path, const ImportOptions& options);

/// Reads `text`, another form of the FBX file that gave `original`. Throws SceneError.
LibraryScene ReadFbxText(const LibraryScene& original, const std::string& text,
                         const ImportOptions& options);

}  // namespace mapexport
