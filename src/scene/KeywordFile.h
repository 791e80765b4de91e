// Keyword files: keywords for nodes by name.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "scene/Scene.h"
#include "system/Remark.h"

namespace mapexport {

/// A line of the file: nodes whose names match the shell pattern (MatchesPattern) get the keywords.
struct KeywordRule {
  std::size_t line = 0;  ///< from 1
  std::string pattern;
  std::vector<std::string_view> keywords;  ///< each is one of kFaceKeywords
};

/// Reads lines "PATTERN: keyword, keyword". The last ":" of a line ends the pattern; keywords may
/// be in any case. Blank lines and lines that begin with "#" are ignored. Throws SceneError with
/// the line's number for any other line.
std::vector<KeywordRule> ReadKeywordFile(const std::string& path);

/// Adds the keywords of each rule, one per line, to the user properties of all nodes with a mesh
/// whose names match, unless they are there already. Returns a warning for each rule that matches
/// no such node.
Remarks SetKeywords(const std::vector<KeywordRule>& rules, Scene& scene);

}  // namespace mapexport
