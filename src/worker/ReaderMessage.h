// The reader's message, which accompanies the scene.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "system/Remark.h"

namespace mapexport {

/// The most side files of a scene; with more, a reader must refuse the scene.
inline constexpr std::size_t kMostSideFiles = 4096;

/// Written when reading is over.
struct ReaderMessage {
  Remarks remarks;  ///< as LimitRemarks leaves them
  Remarks leftOut;
  std::vector<std::string> sideFiles;
};

std::string ToBytes(const ReaderMessage& message);

/// Parses a message. It has at most kMostSideFiles side files, each with a possible path, and
/// remarks as LimitRemarks leaves them, of a few dozen codes. Throws BadMessage when the bytes hold
/// more than that or were not made by ToBytes.
ReaderMessage ReaderMessageOf(std::string_view bytes);

}  // namespace mapexport
