// The child process in which a foreign scene is read.
#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

#include "importer/ImportOptions.h"

namespace mapexport {

/// How the reader's process ends when it ends as it should. The numbers are none that a runtime or
/// a sanitizer uses.
enum class ReaderEnd {
  kRead = 0,      ///< both files are written
  kRefused = 71,  ///< the message file holds the reason
  kMemoryRanOut = 72,
  kCannotHandOver =
      73  ///< what was read could not be written; the message file may hold the reason
};

/// The descriptors that the reader fills.
struct ReaderFiles {
  int scene;    ///< of an empty file: a scene file
  int message;  ///< a ReaderMessage, or the text of an error; its position is where that ends
  int stage;    ///< the writing end of a pipe: gets one byte when reading is over
};

/// A reader that waits for something takes no processor time. The clock may go on for this many
/// times the limit, which is enough on a machine that is busy otherwise.
inline constexpr unsigned kPatience = 10;

/// Bytes of the message file, which has that size before the reader fills it.
inline constexpr std::uint64_t kLongestMessage = std::uint64_t{64} << 20;

/// The process's limits, as many of them as are lower than those that it has anyway.
struct ReaderLimits {
  std::uint32_t seconds = 0;  ///< of processor time, and kPatience times that on the clock; 0: any
  std::uint64_t addressSpace = 0;  ///< bytes; 0: no limit
  std::uint64_t fileSize = 0;      ///< bytes of each file that is written
};

/// The limits for a reader that may take `seconds` on this machine: of its memory (MemoryLimit) a
/// quarter for the scene that is handed over, kLongestMessage for the message, the rest for the
/// reading.
ReaderLimits LimitsOfReader(std::uint32_t seconds);

/// Starts a process that reads the scene at `path` and fills `files`, confined to that
/// (ConfineReader) as far as the kernel can; it ends with a ReaderEnd, or by a signal. Returns its
/// id, or -1 with the reason in errno.
pid_t StartReader(const std::string& path, const ImportOptions& options, const ReaderFiles& files,
                  const ReaderLimits& limits);

}  // namespace mapexport
