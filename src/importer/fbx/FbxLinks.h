// The objects of an FBX file and what is connected to what.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importer/rebuild/AffineMatrix.h"

namespace mapexport {

/// A property that may matter: one for UserText, on visibility, or a shape key's value.
struct FbxProperty {
  std::string name;  ///< bytes of the file, like the text
  std::optional<std::string> text;
  std::optional<double> number;  ///< neither when the value is of another kind
};

struct FbxObject {
  enum class Kind { kModel, kMaterial, kGeometry, kDeformer };
  Kind kind = Kind::kModel;
  std::int64_t id = 0;
  std::string name;            ///< bytes of the file, without the class before or behind it
  std::string className = {};  ///< "Mesh", "NurbsCurve", ...
  std::vector<FbxProperty> properties = {};  ///< of all but materials
  /// Takes a mesh to its place in a bone, for the cluster of this bone in a skin. Empty when the
  /// file has it in another form, for example compressed.
  std::optional<AffineMatrix> bind = {};
};

struct FbxLink {
  std::int64_t child = 0;
  std::int64_t parent = 0;  ///< 0: the scene
  std::size_t typeAt = 0;   ///< offset of the two letters of its type, "OO", in the text
};

/// What the sections "Objects" and "Connections" say, in the file's order.
struct FbxLinks {
  std::vector<FbxObject> objects;
  std::vector<FbxLink> links;  ///< of one object to another ("OO")
};

/// Reads both sections of the text of an FBX file, ASCII or binary, of version 7.0 or later. Empty
/// when the text is anything else or damaged. Cost: linear.
std::optional<FbxLinks> ReadFbxLinks(std::string_view text);

}  // namespace mapexport
