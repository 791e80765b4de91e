#include "worker/ReadForeignScene.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "importer/text/ControlCharacters.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"
#include "system/Descriptor.h"
#include "system/RunError.h"
#include "worker/LimitReader.h"
#include "worker/ReaderMessage.h"
#include "worker/ReaderProcess.h"

namespace mapexport {
namespace {

// A reader that was taken over chooses the text of its error. Ours name a file or two.
constexpr std::size_t kLongestError = 8192;

[[noreturn]] void Fail(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

Descriptor MakeMemoryFile(const std::string& path, const char* name) {
  Descriptor file(memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file.IsOpen()) {
    Fail(path, fmt::format("can't be read: no memory file can be made: {}", ErrnoText(errno)));
  }
  return file;
}

/// A file that can't grow beyond what a message may be. Only what is written takes memory.
Descriptor MakeMessageFile(const std::string& path) {
  Descriptor file = MakeMemoryFile(path, "message");
  if (ftruncate(file.Get(), static_cast<off_t>(kLongestMessage)) != 0 ||
      fcntl(file.Get(), F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL) != 0) {
    Fail(path, fmt::format("can't be read: no memory file can be made: {}", ErrnoText(errno)));
  }
  return file;
}

/// The first bytes of the file; all or none of these.
std::string BytesOf(int file, std::size_t wanted) {
  std::string bytes(wanted, '\0');
  std::size_t size = 0;
  while (size < bytes.size()) {
    const ssize_t count =
        pread(file, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size));
    if (count <= 0) return {};
    size += static_cast<std::size_t>(count);
  }
  return bytes;
}

/// What the reader wrote to the message file, up to `most` bytes of it; all or none of these.
std::string MessageIn(int file, std::size_t most) {
  const off_t end = lseek(file, 0, SEEK_CUR);  // the position is the reader's, too
  if (end < 0) return {};
  return BytesOf(file,
                 std::min({static_cast<std::size_t>(end), most, std::size_t{kLongestMessage}}));
}

/// What the reader said of itself before it read anything.
Confinement ConfinementIn(int file) {
  struct stat info {};
  const int seals = fcntl(file, F_GET_SEALS);
  if (seals < 0 || (seals & kSealed) != kSealed || fstat(file, &info) != 0) {
    throw BadReaderMessage("the reader crashed on it (it did not say how it is confined)");
  }
  return ConfinementOf(BytesOf(file, static_cast<std::size_t>(info.st_size)));
}

/// The text of an error in the message file; what is too long is cut.
std::string ErrorIn(int file) {
  std::string text = MessageIn(file, kLongestError + 1);
  if (text.size() > kLongestError) text.replace(kLongestError, 1, "...");
  return text;
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

/// Waits for the byte that the reader writes when reading is over; false when it ends without.
bool WaitForByte(int pipe) {
  char byte = 0;
  ssize_t count = 0;
  while ((count = read(pipe, &byte, sizeof byte)) < 0 && errno == EINTR) {
  }
  return count == 1;
}

/// What wait says of a reader's end, and the processor time that it took.
struct End {
  int status = 0;
  std::chrono::microseconds processor{};
};

End WaitForEnd(pid_t reader, const std::string& path) {
  End end;
  rusage used{};
  while (wait4(reader, &end.status, 0, &used) < 0) {
    if (errno == EINTR) continue;
    Fail(path, fmt::format("can't be read: the reader's end is not known: {}", ErrnoText(errno)));
  }
  const auto timeOf = [](const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
  };
  end.processor = timeOf(used.ru_utime) + timeOf(used.ru_stime);
  return end;
}

/// The signal that ended the reader; where it did not heed the one at its limit and was killed for
/// that, the one at its limit.
int SignalOf(const End& end, std::chrono::steady_clock::duration onClock, std::uint32_t seconds) {
  const int signal = WTERMSIG(end.status);
  const std::chrono::seconds limit(seconds);
  if (signal != SIGKILL || seconds == 0) return signal;
  if (end.processor > limit) return SIGXCPU;
  return onClock > kPatience * limit ? SIGALRM : signal;
}

/// Why the reader, which ended by `signal`, did.
std::string ReasonOfSignal(int signal, std::uint32_t seconds) {
  if (signal == SIGXCPU && seconds == 0) {
    return "the reader used up the processor time that the system allows";
  }
  if (signal == SIGXCPU) {
    return fmt::format("can't be read within {} second{} of processor time (--read-limit)", seconds,
                       seconds == 1 ? "" : "s");
  }
  if (signal == SIGALRM) return "the reader waited in vain for something (--read-limit)";
  const char* const name = sigdescr_np(signal);
  const std::string text = name == nullptr ? fmt::format("signal {}", signal) : name;
  if (signal == SIGSYS) {
    return fmt::format(
        "the reader was ended when it tried what reading never needs, as if taken over ({})", text);
  }
  if (signal == SIGKILL) {
    return fmt::format("the reader was ended from outside ({}), perhaps for want of memory", text);
  }
  if (signal == SIGTERM || signal == SIGINT || signal == SIGHUP) {
    return fmt::format("the reader was ended from outside ({})", text);
  }
  return fmt::format("the reader crashed on it ({})", text);
}

/// Throws unless `status` says that both files were written.
void RequireWritten(const std::string& path, int status, int messageFile) {
  switch (static_cast<ReaderEnd>(WEXITSTATUS(status))) {
    case ReaderEnd::kRead:
      return;
    case ReaderEnd::kRefused: {
      const std::string message = ErrorIn(messageFile);
      throw SceneError(message.empty() ? path + ": the reader refused it" : message);
    }
    case ReaderEnd::kMemoryRanOut:
      Fail(path, "needs more memory to read than there is");
    case ReaderEnd::kCannotHandOver:
      Fail(path, fmt::format("what was read can't be handed over: {}", ErrorIn(messageFile)));
  }
  Fail(path, fmt::format("the reader crashed on it (exit status {})", WEXITSTATUS(status)));
}

/// How many nodes and materials a scene file of that size may have. Each takes some hundred bytes
/// of memory, and a few in a file that wants to do harm; one that somebody made has a name, a
/// matrix, a mesh or a colour.
std::uint64_t MostItems(std::uint64_t size) {
  constexpr std::uint64_t kAlways = 65'536;
  constexpr std::uint64_t kBytesOfOne = 32;
  constexpr std::uint64_t kMemoryOfOne = 1024;
  return kAlways + std::min(size / kBytesOfOne, MemoryLimit() / kMemoryOfOne);
}

/// Reads the scene file in memory; its errors name `path`.
Scene ReadHandedOver(const std::string& path, int file) {
  const std::string opened = fmt::format("/proc/self/fd/{}", file);
  struct stat info {};
  if (fstat(file, &info) != 0) Fail(path, "can't be read: " + ErrnoText(errno));
  try {
    return ReadSceneFile(opened, MostItems(static_cast<std::uint64_t>(info.st_size)));
  } catch (const SceneError& error) {
    std::string_view reason = error.what();
    if (reason.starts_with(opened)) reason.remove_prefix(opened.size());
    throw SceneError(fmt::format("{}{}", path, reason));
  }
}

}  // namespace

ForeignScene ReadForeignScene(const std::string& path, const ImportOptions& options,
                              std::uint32_t seconds,
                              const std::function<void(const char* name)>& stage) {
  const Descriptor confinementFile = MakeMemoryFile(path, "confinement");
  const Descriptor sceneFile = MakeMemoryFile(path, "scene");
  const Descriptor messageFile = MakeMessageFile(path);
  Pipe pipe = MakePipe(path);
  const auto start = std::chrono::steady_clock::now();
  const pid_t reader =
      StartReader(path, options,
                  {confinementFile.Get(), sceneFile.Get(), messageFile.Get(), pipe.writing.Get()},
                  LimitsOfReader(seconds));
  if (reader < 0) {
    Fail(path, fmt::format("can't be read: no process can be started: {}", ErrnoText(errno)));
  }
  pipe.writing = Descriptor();
  stage("reading");
  if (WaitForByte(pipe.reading.Get())) stage("rebuilding");
  const End end = WaitForEnd(reader, path);
  if (WIFSIGNALED(end.status)) {
    const auto onClock = std::chrono::steady_clock::now() - start;
    Fail(path, ReasonOfSignal(SignalOf(end, onClock, seconds), seconds));
  }
  RequireWritten(path, end.status, messageFile.Get());

  Scene scene = ReadHandedOver(path, sceneFile.Get());
  // The reader has blanked them, unless a hostile file has taken it over.
  if (BlankControlCharacters(scene) != 0) {
    Fail(path, "the reader crashed on it (its names hold control characters)");
  }
  try {
    Confinement confinement = ConfinementIn(confinementFile.Get());
    ReaderMessage message = ReaderMessageOf(MessageIn(messageFile.Get(), kLongestMessage));
    return {{std::move(scene), std::move(message.remarks), std::move(message.leftOut),
             std::move(message.sideFiles)},
            std::move(confinement)};
  } catch (const BadReaderMessage& error) {
    Fail(path, error.what());
  }
}

}  // namespace mapexport
