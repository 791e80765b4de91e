// The child process in which a foreign scene is read.
#pragma once

#include <string>

#include <fcntl.h>
#include <sys/types.h>

#include "importer/ImportOptions.h"
#include "worker/LimitReader.h"

namespace mapexport {

/// How the reader's process ends when it ends as it should. The numbers are none that a runtime or
/// a sanitizer uses.
enum class ReaderEnd {
  kRead = 0,      ///< both files are written
  kRefused = 71,  ///< the message file holds the reason
  kMemoryRanOut = 72,
  /// What was read could not be written; the message file may hold the reason.
  kCannotHandOver = 73
};

/// Seals of a memory file that can't be changed any more.
inline constexpr int kSealed = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

/// The descriptors that the reader fills.
struct ReaderFiles {
  int confinement;  ///< of an empty memory file: a Confinement, sealed before anything is read
  int scene;        ///< of an empty file: a scene file
  int message;      ///< a ReaderMessage, or the text of an error; its position is where that ends
  int stage;        ///< the writing end of a pipe: gets one byte when reading is over
};

/// Starts a process that reads the scene at `path` and fills `files`, confined to that
/// (ConfineReader) as far as the kernel can; how far is said, and can't be changed any more, when
/// it begins to read. It ends with a ReaderEnd, or by a signal. Returns its id, or -1 with the
/// reason in errno.
pid_t StartReader(const std::string& path, const ImportOptions& options, const ReaderFiles& files,
                  const ReaderLimits& limits);

}  // namespace mapexport
