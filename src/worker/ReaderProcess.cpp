#include "worker/ReaderProcess.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <locale>
#include <new>
#include <ostream>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include "importer/ImportScene.h"
#include "scene/SceneCensus.h"
#include "scene/SceneFile.h"
#include "system/FdOutput.h"
#include "system/RunError.h"
#include "worker/BecomeWorker.h"
#include "worker/ConfineReader.h"
#include "worker/ReaderMessage.h"

namespace mapexport {
namespace {

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

/// Before the scene can have any say.
void HandOver(const Confinement& confinement, const ReaderFiles& files) {
  int error = WriteFile(files.confinement, [&](std::ostream& out) { out << ToBytes(confinement); });
  if (error == 0 && fcntl(files.confinement, F_ADD_SEALS, kSealed) != 0) error = errno;
  if (error == 0) return;
  WriteMessage(files.message, ErrnoText(error));
  End(ReaderEnd::kCannotHandOver);
}

[[noreturn]] void Read(const std::string& path, const ImportOptions& options,
                       const ReaderFiles& files) {
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
      error = WriteMessage(files.message, ToBytes(ReaderMessage{std::move(imported.remarks),
                                                                std::move(imported.leftOut),
                                                                std::move(imported.sideFiles)}));
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

pid_t StartReader(const std::string& path, const ImportOptions& options, const ReaderFiles& files,
                  const ReaderLimits& limits) {
  // An inherited "ignore" would keep its end from us.
  signal(SIGCHLD, SIG_DFL);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid != 0) return pid;

  BecomeWorker(parent);
  std::set_terminate(EndOnTerminate);
  // The import library reads numbers, and makes names of some, as the language in force has them.
  std::locale::global(std::locale::classic());
  const std::array kept{files.confinement, files.scene, files.message, files.stage};
  HandOver(ConfineReader(path, kept, limits), files);
  Read(path, options, files);
}

}  // namespace mapexport
