// Finds words of user property texts that were probably meant to be keywords.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "scene/Scene.h"
#include "system/Remark.h"

namespace mapexport {

struct NearKeyword {
  std::string word;                ///< as it is in the text
  std::string_view keyword;        ///< empty: the word is several keywords in one
  std::vector<std::string> nodes;  ///< names of the nodes with it, one for each line
};

/// Whether `word` sets a flag of a node's faces.
bool IsKeyword(std::string_view word);

/// The keyword that `word` was probably meant to be: they differ in case and blanks only, or
/// besides these in one letter that is added, missing, replaced or swapped with its neighbour.
/// Empty when there is none, and when `word` is a keyword.
std::string_view NearestKeyword(std::string_view word);

/// The words of the nodes' user property texts that are near a keyword (NearestKeyword), or are
/// several keywords without the tabs or line ends that separate words; each word once, in the order
/// of the nodes.
std::vector<NearKeyword> FindNearKeywords(const Scene& scene);

/// A warning that names both words and the nodes.
Remark Describe(NearKeyword near);

}  // namespace mapexport
