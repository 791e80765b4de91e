// What the importer has to say about a scene that it could read.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "system/RemarkCode.h"

namespace mapexport {

enum class RemarkKind { kNote, kWarning };

struct ImportRemark {
  RemarkKind kind = RemarkKind::kWarning;
  std::string code;  ///< a short stable word in kebab-case, for programs: one of kRemarkCodes
  /// One line but for the names in it (show it with PrintableText), without a "warning" prefix and
  /// without the file's name.
  std::string text;
  std::uint64_t count = 1;   ///< how many things it is about
  std::uint64_t stands = 1;  ///< for how many remarks of its code it stands (LimitRemarks)
};

using ImportRemarks = std::vector<ImportRemark>;

inline ImportRemark MakeWarning(RemarkCode code, std::string text, std::uint64_t count = 1) {
  return {RemarkKind::kWarning, code.Text(), std::move(text), count};
}

inline ImportRemark MakeNote(RemarkCode code, std::string text, std::uint64_t count = 1) {
  return {RemarkKind::kNote, code.Text(), std::move(text), count};
}

/// The sum of two counts, the largest number when that is too large: the counts come from a reader
/// that a hostile file may have taken over.
inline std::uint64_t AddCounts(std::uint64_t a, std::uint64_t b) {
  return a + b < a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

}  // namespace mapexport
