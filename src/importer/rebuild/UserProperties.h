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
/// the modelling application stored as the node's user properties. The library's other formats have
/// none.
std::string UserPropertyText(const LibraryScene& source, const aiNode& node);

/// Reads the texts of all nodes and remembers what is wrong with them.
class UserPropertyReader {
 public:
  /// `source` must outlive this object.
  explicit UserPropertyReader(const LibraryScene& source) : source_(source), wholeTexts_(source) {}

  /// UserPropertyText of a node whose name is `nodeName`, whole where the library has cut it.
  std::string TextOf(const aiNode& node, const std::string& nodeName);
  /// A warning of texts that are probably cut, since they are as long as the library's texts can
  /// be and the file has none that goes on.
  void AddRemarks(Remarks& remarks) const;

 private:
  const LibraryScene& source_;
  WholeTexts wholeTexts_;
  std::string firstCut_;  // name of the first node whose text is cut
  std::size_t cutCount_ = 0;
};

}  // namespace mapexport
