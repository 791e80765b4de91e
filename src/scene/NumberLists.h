// The number lists of a scene file, which are nearly all of its text, taken out of it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/Mesh.h"

namespace mapexport {

/// Splits a scene file's text into the lists of its meshes, parsed, and a short rest for the JSON
/// parser, in which each of these lists is an empty array. (The parser's index of a whole text is
/// larger than the text, and takes longer than these lists do.)
///
/// The lists are the arrays of members named "vertices", "faces", "textureVertices" and
/// "textureFaces". Whoever reads such a member must ask for its list first. A list stays in the
/// rest when its member's name is written with escapes, or when ParseNumberList refuses it; so what
/// is wrong with a text is never hidden.
class NumberLists {
 public:
  /// No lists and no rest.
  NumberLists() = default;
  /// A zero byte must follow `text` in memory. Time is linear in its size.
  explicit NumberLists(std::string_view text);

  /// Only the first call gives it.
  std::string TakeRest() { return std::move(rest_); }
  /// The offset in the text of a byte of the rest, or of its end.
  std::size_t OffsetInText(std::size_t offsetInRest) const;

  /// The list that was taken out at that offset of the rest, null where there is none. It may be
  /// moved from.
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
