#include "app/ReadForeignScene.h"

#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/ReaderMessage.h"
#include "app/ReaderProcess.h"
#include "app/RunError.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"
#include "settings/Descriptor.h"

namespace mapexport {
namespace {

// What a reader that broke down may have left is not taken for more than this.
constexpr std::size_t kLongestMessage = 64 << 20;

[[noreturn]] void Fail(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

Descriptor MakeMemoryFile(const std::string& path, const char* name) {
  Descriptor file(memfd_create(name, MFD_CLOEXEC));
  if (!file.IsOpen()) {
    Fail(path, fmt::format("can't be read: no memory file can be made: {}", ErrnoText(errno)));
  }
  return file;
}

/// The file's bytes, whatever its position is; all or none of them.
std::string BytesOf(int file) {
  std::string bytes;
  char block[65536];
  ssize_t count = 0;
  while ((count = pread(file, block, sizeof block, static_cast<off_t>(bytes.size()))) > 0) {
    bytes.append(block, static_cast<std::size_t>(count));
    if (bytes.size() > kLongestMessage) return {};
  }
  return count == 0 ? bytes : std::string();
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

/// What waitpid says of the end of `reader`.
int WaitForEnd(pid_t reader, const std::string& path) {
  int end = 0;
  while (waitpid(reader, &end, 0) < 0) {
    if (errno == EINTR) continue;
    Fail(path, fmt::format("can't be read: the reader's end is not known: {}", ErrnoText(errno)));
  }
  return end;
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

/// Throws unless `end` says that both files were written.
void RequireRead(const std::string& path, int end, std::uint32_t seconds, int messageFile) {
  if (WIFSIGNALED(end)) Fail(path, ReasonOfSignal(WTERMSIG(end), seconds));
  switch (static_cast<ReaderEnd>(WEXITSTATUS(end))) {
    case ReaderEnd::kRead:
      return;
    case ReaderEnd::kRefused: {
      const std::string message = BytesOf(messageFile);
      throw SceneError(message.empty() ? path + ": the reader refused it" : message);
    }
    case ReaderEnd::kMemoryRanOut:
      Fail(path, "needs more memory to read than there is");
    case ReaderEnd::kCannotHandOver:
      Fail(path, fmt::format("what was read can't be handed over: {}", BytesOf(messageFile)));
  }
  Fail(path, fmt::format("the reader crashed on it (exit status {})", WEXITSTATUS(end)));
}

/// Reads the scene file in memory; its errors name `path`.
Scene ReadHandedOver(const std::string& path, int file) {
  const std::string opened = fmt::format("/proc/self/fd/{}", file);
  try {
    return ReadSceneFile(opened);
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
  const Descriptor sceneFile = MakeMemoryFile(path, "scene");
  const Descriptor messageFile = MakeMemoryFile(path, "message");
  Pipe pipe = MakePipe(path);
  const pid_t reader =
      StartReader(path, options, {sceneFile.Get(), messageFile.Get(), pipe.writing.Get()},
                  LimitsOfReader(seconds));
  if (reader < 0) {
    Fail(path, fmt::format("can't be read: no process can be started: {}", ErrnoText(errno)));
  }
  pipe.writing = Descriptor();
  stage("reading");
  if (WaitForByte(pipe.reading.Get())) stage("rebuilding");
  RequireRead(path, WaitForEnd(reader, path), seconds, messageFile.Get());

  std::optional<ReaderMessage> message = ReaderMessageOf(BytesOf(messageFile.Get()));
  if (!message) Fail(path, "the reader crashed on it (its message is damaged)");
  return {{ReadHandedOver(path, sceneFile.Get()), std::move(message->remarks),
           std::move(message->leftOut), std::move(message->sideFiles)},
          std::move(message->confinement)};
}

}  // namespace mapexport
