// What the reader's process has to say beside the scene.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "system/Remark.h"
#include "worker/ConfineReader.h"

namespace mapexport {

/// Files beside a scene that are taken over as read for it.
inline constexpr std::size_t kMostSideFiles = 4096;

/// Said when reading is over.
struct ReaderMessage {
  ImportRemarks remarks;  ///< as LimitRemarks leaves them
  ImportRemarks leftOut;
  std::vector<std::string> sideFiles;
};

/// What makes a message one that is not taken over; what() is the end of an error's line.
class BadReaderMessage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The message in a form of its own, for a process of the same program.
std::string ToBytes(const ReaderMessage& message);

/// The message of such bytes. It has at most kMostSideFiles side files, each a path that can be
/// one, and remarks as LimitRemarks leaves them, of a few dozen codes. Throws BadReaderMessage
/// where the bytes hold more than that, or are not what ToBytes made.
ReaderMessage ReaderMessageOf(std::string_view bytes);

/// The same for what the reader says of itself before it reads anything.
std::string ToBytes(const Confinement& confinement);
Confinement ConfinementOf(std::string_view bytes);

}  // namespace mapexport
