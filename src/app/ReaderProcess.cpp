#include "app/ReaderProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <locale>
#include <new>
#include <ostream>
#include <utility>

#include <fmt/format.h>
#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include "app/AddressSanitizer.h"
#include "app/BecomeWorker.h"
#include "app/ConfineReader.h"
#include "app/FdOutput.h"
#include "app/MemoryLimit.h"
#include "app/ReaderMessage.h"
#include "app/RunError.h"
#include "app/SceneCensus.h"
#include "importer/ImportScene.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

// A reader that was taken over can shut its ears to the signals that end it at its limits. So many
// seconds later comes one that nobody can.
constexpr std::uint32_t kGrace = 5;

// Libraries take address space and hardly any memory: below that even small files could not be
// read.
constexpr std::uint64_t kLeastAddressSpace = std::uint64_t{512} << 20;

// A scene file of 4 GiB or more is not read.
constexpr std::uint64_t kLargestSceneFile = 0xFFFF'FFFF;

[[noreturn]] void End(ReaderEnd end) {
  // Nothing is cleaned up: destroying what a damaged file led to can crash.
  _exit(static_cast<int>(end));
}

[[noreturn]] void EndOnTerminate() {
  try {
    if (std::current_exception()) std::rethrow_exception(std::current_exception());
  } catch (const std::bad_alloc&) {
    End(ReaderEnd::kMemoryRanOut);
  } catch (...) {
  }
  std::abort();
}

/// Lowers the limit for good. Of processor time, the kernel grants `grace` seconds after the
/// signal.
void SetLimit(__rlimit_resource resource, rlim_t wanted, rlim_t grace = 0) {
  rlimit limit{};
  getrlimit(resource, &limit);
  limit.rlim_cur = std::min(limit.rlim_cur, wanted);
  limit.rlim_max = std::min(limit.rlim_max, wanted + grace);
  setrlimit(resource, &limit);  // lowering one always succeeds
}

/// Ends the process by SIGKILL in so many seconds.
void EndIn(time_t seconds) {
  sigevent event{};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGKILL;
  timer_t timer{};
  itimerspec when{};
  when.it_value.tv_sec = seconds;
  // Where there is no timer, the limits still end whoever heeds them.
  if (timer_create(CLOCK_MONOTONIC, &event, &timer) == 0) timer_settime(timer, 0, &when, nullptr);
}

void SetLimits(const ReaderLimits& limits) {
  SetLimit(RLIMIT_FSIZE, limits.fileSize);
  if (limits.addressSpace != 0) SetLimit(RLIMIT_AS, limits.addressSpace);
  if (limits.seconds == 0) return;
  SetLimit(RLIMIT_CPU, limits.seconds, kGrace);
  const unsigned patience =
      limits.seconds > UINT_MAX / kPatience ? UINT_MAX : limits.seconds * kPatience;
  alarm(patience);
  EndIn(time_t{patience} + kGrace);
}

/// The errno of the first write that failed, 0 when none did.
int WriteFile(int fd, const auto& write) {
  FdOutput output(fd);
  std::ostream out(&output);
  write(out);
  return output.Finish();
}

int WriteMessage(int fd, std::string_view text) {
  if (text.size() > kLongestMessage) return EMSGSIZE;
  return WriteFile(fd, [&](std::ostream& out) { out << text; });
}

[[noreturn]] void Read(const std::string& path, const ImportOptions& options,
                       const ReaderFiles& files, Confinement confinement) {
  try {
    ImportOptions whole = options;
    whole.keepLibraryScene = true;
    whole.onRead = [&files] {
      const char over = 1;
      // Only what is shown depends on it.
      static_cast<void>(!write(files.stage, &over, sizeof over));
    };
    ImportedScene imported = ImportScene(path, whole);
    int error =
        WriteFile(files.scene, [&](std::ostream& out) { WriteSceneFile(imported.scene, out); });
    if (error == 0) {
      error = WriteMessage(files.message,
                           ToBytes({std::move(imported.remarks), std::move(imported.leftOut),
                                    std::move(imported.sideFiles), std::move(confinement)}));
    }
    if (error == 0) End(ReaderEnd::kRead);
    std::string reason = ErrnoText(error);
    if (error == EFBIG) {
      reason = fmt::format("it is too large, with {} triangles where each instance counts",
                           CountScene(imported.scene).triangles);
    }
    WriteMessage(files.message, reason);
    End(ReaderEnd::kCannotHandOver);
  } catch (const std::bad_alloc&) {
    End(ReaderEnd::kMemoryRanOut);
  } catch (const std::exception& error) {
    WriteMessage(files.message, error.what());
    End(ReaderEnd::kRefused);
  }
}

}  // namespace

ReaderLimits LimitsOfReader(std::uint32_t seconds) {
  ReaderLimits limits;
  limits.seconds = seconds;
  const std::uint64_t memory = MemoryLimit();
  limits.fileSize = std::min(memory / 4, kLargestSceneFile);
  // AddressSanitizer takes terabytes of it.
  if (!kAddressSanitizer) {
    limits.addressSpace =
        std::max(memory / 4 * 3, kLeastAddressSpace + kLongestMessage) - kLongestMessage;
  }
  return limits;
}

pid_t StartReader(const std::string& path, const ImportOptions& options, const ReaderFiles& files,
                  const ReaderLimits& limits) {
  // An inherited "ignore" would keep its end from us.
  signal(SIGCHLD, SIG_DFL);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid != 0) return pid;

  BecomeWorker(parent);
  SetLimits(limits);
  std::set_terminate(EndOnTerminate);
  // The import library reads numbers, and makes names of some, as the language in force has them.
  std::locale::global(std::locale::classic());
  Confinement confinement = ConfineReader(std::array{files.scene, files.message, files.stage});
  Read(path, options, files, std::move(confinement));
}

}  // namespace mapexport
