// Notes and warnings, by whichever part of the program.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "system/RemarkCode.h"

namespace mapexport {

enum class RemarkKind { kNote, kWarning };

/// An output that was put in place.
struct PlacedOutput {
  std::string path;  ///< as given; empty: none was put in place
  std::uint64_t bytes = 0;
  std::uint64_t triangles = 0;  ///< that are drawn
  std::uint64_t batches = 0;
  std::uint64_t collisionTriangles = 0;  ///< that are not drawn
};

struct Remark {
  RemarkKind kind = RemarkKind::kWarning;
  std::string code;  ///< one of kRemarkCodes, for programs
  /// One line, except that names in it may hold anything: show it with PrintableText. Without a
  /// "warning" prefix and without the file's name.
  std::string text;
  std::uint64_t count = 1;   ///< how many things it is about
  std::uint64_t stands = 1;  ///< how many remarks of its code it sums up (LimitRemarks)
  /// Names of the nodes that it is about, where it is about nodes.
  std::vector<std::string> nodes = {};
  PlacedOutput output = {};  ///< of the remark "exported"
};

using Remarks = std::vector<Remark>;

inline Remark MakeWarning(RemarkCode code, std::string text, std::uint64_t count = 1) {
  return {RemarkKind::kWarning, code.Text(), std::move(text), count, 1, {}, {}};
}

inline Remark MakeNote(RemarkCode code, std::string text, std::uint64_t count = 1) {
  return {RemarkKind::kNote, code.Text(), std::move(text), count, 1, {}, {}};
}

/// The sum of two counts, or the largest number if that overflows: the counts come from a reader
/// that a hostile file may have taken over.
inline std::uint64_t AddCounts(std::uint64_t a, std::uint64_t b) {
  return a + b < a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

}  // namespace mapexport
