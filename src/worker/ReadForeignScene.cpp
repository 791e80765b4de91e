#include "worker/ReadForeignScene.h"

#include <algorithm>
#include <cerrno>
#include <locale>
#include <memory>
#include <ostream>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "importer/FinishScene.h"
#include "scene/SceneCensus.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"
#include "system/Counted.h"
#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "system/RunError.h"
#include "worker/LimitProcess.h"
#include "worker/ReaderMessage.h"
#include "worker/RunInChild.h"
#include "worker/ShadowMemory.h"

namespace mapexport {
namespace {

// A reader that waits takes no processor time. The elapsed time may be this many times the limit,
// which is enough on a machine that is also busy otherwise.
constexpr std::uint64_t kPatience = 10;

// Libraries take address space but hardly any memory: with less, even small files could not be
// read.
constexpr std::uint64_t kLeastAddressSpace = std::uint64_t{512} << 20;

// Side files are read one by one.
constexpr std::uint64_t kMostOpenFiles = 64;

[[noreturn]] void Fail(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

[[noreturn]] void FailTooLarge(const Scene& scene) {
  throw ChildError(fmt::format("it is too large, with {} triangles where each instance counts",
                               CountScene(scene).triangles));
}

/// The limits for a reader that may take `seconds` on this machine. Its memory is split: a quarter
/// for the scene that is handed over, kLongestMessage for the message, the rest for reading.
ProcessLimits LimitsOfReader(std::uint32_t seconds) {
  const std::uint64_t memory = MemoryLimit();
  ProcessLimits limits;
  limits.processorSeconds = seconds;
  limits.clockSeconds =
      static_cast<std::uint32_t>(std::min<std::uint64_t>(kPatience * seconds, UINT32_MAX));
  limits.fileSize = memory / 4;
  limits.openFiles = kMostOpenFiles;
  // AddressSanitizer takes terabytes of address space.
  if (!kShadowMemory) {
    limits.addressSpace =
        std::max(memory / 4 * 3, kLeastAddressSpace + kLongestMessage) - kLongestMessage;
  }
  return limits;
}

/// Reads the scene and writes it as a scene file, with one byte to `stage` in between. Returns a
/// ReaderMessage. `most` is LargestScene, which can't be found out in there. For a process that
/// ends without cleaning up.
std::string Read(const std::string& path, const ImportOptions& options, std::uint64_t most,
                 int stage, FdOutput& output) {
  // The import library parses numbers, and makes some names, by the current locale.
  std::locale::global(std::locale::classic());
  ImportOptions whole = options;
  whole.keepLibraryScene = true;
  whole.onRead = [stage] {
    const char over = 1;
    // Only the progress display depends on it.
    static_cast<void>(!write(stage, &over, sizeof over));
  };
  // Not destroyed, because destroying it could crash.
  ImportedScene& imported = *std::make_unique<ImportedScene>(ImportScene(path, whole)).release();
  if (imported.sideFiles.size() > kMostSideFiles) {
    Fail(path, fmt::format("is read from {} files, more than the {} that are allowed",
                           imported.sideFiles.size(), kMostSideFiles));
  }
  if (ListBytes(imported.scene) > most) FailTooLarge(imported.scene);
  std::ostream out(&output);
  WriteBinaryScene(imported.scene, out);
  if (output.Finish() == EFBIG) FailTooLarge(imported.scene);
  return ToBytes(ReaderMessage{std::move(imported.remarks), std::move(imported.leftOut),
                               std::move(imported.sideFiles)});
}

struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

Pipe MakePipe(const std::string& path) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    Fail(path, fmt::format("can't be read: no pipe can be made: {}", ErrnoText(errno)));
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// Waits for the byte that the reader writes when reading is over; false when the reader ends
/// first.
bool WaitForByte(int pipe) {
  char byte = 0;
  ssize_t count = 0;
  while ((count = read(pipe, &byte, sizeof byte)) < 0 && errno == EINTR) {
  }
  return count == 1;
}

/// Why `signal` ended the reader.
std::string ReasonOfSignal(int signal, std::uint32_t seconds) {
  if (signal == SIGXCPU && seconds == 0) {
    return "the reader used up the processor time that the system allows";
  }
  if (signal == SIGXCPU) {
    return fmt::format("can't be read within {} of processor time (--read-limit)",
                       Counted(seconds, "second"));
  }
  if (signal == SIGALRM) return "the reader waited too long for something (--read-limit)";
  const std::string text = SignalText(signal);
  if (signal == SIGSYS) {
    return fmt::format(
        "the reader was ended for a call that reading never needs, as in an attack ({})", text);
  }
  if (signal == SIGKILL) {
    return fmt::format("the reader was ended from outside ({}), perhaps because memory ran out",
                       text);
  }
  if (signal == SIGTERM || signal == SIGINT || signal == SIGHUP) {
    return fmt::format("the reader was ended from outside ({})", text);
  }
  return fmt::format("the reader crashed on it ({})", text);
}

/// Throws unless the child handed over its whole result.
void RequireRead(const std::string& path, const ChildOutcome& outcome, std::uint32_t seconds) {
  switch (outcome.end) {
    case ChildEnd::kDone:
      return;
    case ChildEnd::kRefused:
      throw SceneError(outcome.message.empty() ? path + ": the reader refused it"
                                               : outcome.message);
    case ChildEnd::kMemoryRanOut:
      Fail(path, "needs more memory to read than there is");
    case ChildEnd::kCannotHandOver:
      Fail(path, fmt::format("the scene can't be handed over: {}", outcome.message));
    case ChildEnd::kSignal:
      Fail(path, ReasonOfSignal(outcome.number, seconds));
    case ChildEnd::kOtherStatus:
      Fail(path, fmt::format("the reader crashed on it (exit status {})", outcome.number));
  }
}

/// The most nodes and materials that a scene file of that size may have. In memory each takes some
/// hundred bytes, but in a malicious file only a few. In a real scene each has a name, a matrix, a
/// mesh or a colour.
std::uint64_t MostItems(std::uint64_t size) {
  constexpr std::uint64_t kAlways = 65'536;
  constexpr std::uint64_t kBytesOfOne = 32;
  constexpr std::uint64_t kMemoryOfOne = 1024;
  return kAlways + std::min(size / kBytesOfOne, MemoryLimit() / kMemoryOfOne);
}

/// Reads the scene that was handed over; its errors name `path`.
Scene ReadHandedOver(const std::string& path, const Descriptor& file) {
  struct stat info {};
  if (fstat(file.Get(), &info) != 0) Fail(path, "can't be read: " + ErrnoText(errno));
  // Brackets cost the parser several times their size; a real tree is small.
  return ReadBinaryScene(file, path,
                         {.mostItems = MostItems(static_cast<std::uint64_t>(info.st_size)),
                          .mostBytes = LargestScene(),
                          .mostJson = MemoryLimit() / 16});
}

}  // namespace

std::uint64_t LargestScene() {
  return MemoryLimit() / 4;
}

ForeignScene ReadForeignScene(const std::string& path, const ImportOptions& options,
                              std::uint32_t seconds,
                              const std::function<void(const char* name)>& stage) {
  Pipe pipe = MakePipe(path);
  ChildTask task;
  task.run = [&, most = LargestScene()](FdOutput& output) {
    return Read(path, options, most, pipe.writing.Get(), output);
  };
  task.meanwhile = [&] {
    pipe.writing = Descriptor();
    stage("reading");
    if (WaitForByte(pipe.reading.Get())) stage("rebuilding");
  };
  task.limits = LimitsOfReader(seconds);
  task.confinedTo = path;
  task.kept = {pipe.writing.Get()};
  try {
    ChildOutcome outcome = RunInChild(task);
    RequireRead(path, outcome, seconds);
    Scene scene = ReadHandedOver(path, outcome.output);
    // The reader replaces them by blanks, unless a hostile file has taken it over.
    if (BlankControlCharacters(scene) != 0) {
      Fail(path, "the reader crashed on it (its names hold control characters)");
    }
    if (!outcome.confinement) {
      Fail(path, "the reader crashed on it (it did not say how it is confined)");
    }
    ReaderMessage message = ReaderMessageOf(outcome.message);
    return {{std::move(scene), std::move(message.remarks), std::move(message.leftOut),
             std::move(message.sideFiles)},
            std::move(*outcome.confinement)};
  } catch (const ChildError& error) {
    Fail(path, fmt::format("can't be read: {}", error.what()));
  } catch (const BadMessage& error) {
    Fail(path, fmt::format("the reader crashed on it ({})", error.what()));
  }
}

}  // namespace mapexport
