// The user-defined property text of a foreign node.
#pragma once

#include <cstddef>
#include <string>

#include "importer/text/WholeTexts.h"
#include "system/Remark.h"

struct aiNode;

namespace mapexport {

struct LibraryScene;

/// The text that the host would hold for `node`, valid UTF-8, lines ended as in the file. FBX: what
/// the modelling application stored as the node's user properties. glTF: the member
/// `userProperties` of the node's `extras`, then a line for each member that is `true`: its name.
/// Other formats have none.
std::string UserPropertyText(const LibraryScene& source, const aiNode& node);

/// Reads the texts of all nodes and remembers what is wrong with them.
class UserPropertyReader {
 public:
  /// `source` must outlive this object.
  explicit UserPropertyReader(const LibraryScene& source) : source_(source), wholeTexts_(source) {}

  /// UserPropertyText of a node whose name is `nodeName`, whole where the library has cut it.
  std::string TextOf(const aiNode& node, const std::string& nodeName);
  /// Warnings of texts that are probably cut (as long as the library's texts can be, and not found
  /// whole in the file), and of members of glTF extras that are named like a keyword but aren't
  /// `true`.
  void AddRemarks(Remarks& remarks) const;

 private:
  struct Finding {
    std::string node;  // the first one
    std::string detail;
    std::size_t count = 0;
  };
  static void Note(Finding& finding, const std::string& node, const std::string& detail);

  const LibraryScene& source_;
  WholeTexts wholeTexts_;
  Finding cutTexts_;
  Finding idleMembers_;
};

}  // namespace mapexport
