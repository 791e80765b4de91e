// Takes the number lists, which are most of a scene file's text, out of it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/Mesh.h"

namespace mapexport {

/// Splits a scene file's text into the parsed lists of its meshes and a short rest for the JSON
/// parser, which has an empty array in place of each list. (The parser's index of a whole text
/// would be larger than the text, and take longer than parsing these lists.)
///
/// The lists are the arrays of members named "vertices", "faces", "textureVertices",
/// "textureFaces" and "cornerNormals". The reader of such a member must ask ListAt first. A list
/// stays in the rest when its member's name is written with escapes, or when ParseNumberList
/// refuses it, so that no defect is hidden.
class NumberLists {
 public:
  /// No lists and no rest.
  NumberLists() = default;
  /// A zero byte must follow `text` in memory. Time is linear in its size.
  explicit NumberLists(std::string_view text);

  /// May be called once.
  std::string TakeRest() { return std::move(rest_); }
  /// The offset in the text of a byte of the rest, or of its end.
  std::size_t OffsetInText(std::size_t offsetInRest) const;

  /// The list that was taken out at that offset of the rest; null when there is none. The caller
  /// may move from it.
  template <class Element>
  std::vector<Element>* ListAt(std::size_t offsetInRest) {
    Cut* const cut = CutAt(offsetInRest);
    return cut == nullptr ? nullptr : std::get_if<std::vector<Element>>(&cut->list);
  }

 private:
  using List = std::variant<std::vector<Point3>, std::vector<Face>, std::vector<TVFace>>;
  struct Cut {
    std::size_t inRest;  ///< offset of the empty array
    std::size_t begin;   ///< of the list in the text
    std::size_t end;
    List list;
  };

  Cut* CutAt(std::size_t offsetInRest);

  std::vector<Cut> cuts_;  // ascending
  std::string rest_;
};

}  // namespace mapexport
