// What the reader's process has to say beside the scene.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "system/Remark.h"

namespace mapexport {

/// Files beside a scene that are taken over as read for it. A reader of more must refuse the scene.
inline constexpr std::size_t kMostSideFiles = 4096;

/// Said when reading is over.
struct ReaderMessage {
  Remarks remarks;  ///< as LimitRemarks leaves them
  Remarks leftOut;
  std::vector<std::string> sideFiles;
};

std::string ToBytes(const ReaderMessage& message);

/// The message of such bytes. It has at most kMostSideFiles side files, each a path that can be
/// one, and remarks as LimitRemarks leaves them, of a few dozen codes. Throws BadMessage where the
/// bytes hold more than that, or are not what ToBytes made.
ReaderMessage ReaderMessageOf(std::string_view bytes);

}  // namespace mapexport
