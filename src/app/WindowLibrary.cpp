#include "app/WindowLibrary.h"

#include <cerrno>
#include <exception>
#include <filesystem>
#include <string_view>

#include <dlfcn.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/FindLibrary.h"
#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// A display that does not answer for so many seconds is none.
constexpr unsigned kPatience = 60;
constexpr std::size_t kLongestReason = 16384;

[[noreturn]] void Fail(std::string_view reason) {
  throw RunError(fmt::format("--dialog: the dialog can't be shown: {}", reason));
}

CreatePresenterFunction* LoadFunction() {
  const std::string path = FindLibrary("mapexport-window.so");
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    Fail(fmt::format("{} is missing: mapexport was built without Qt 6 (Debian: qt6-base-dev)",
                     path));
  }
  // It stays loaded: Qt can't be unloaded.
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const function = library == nullptr ? nullptr : dlsym(library, kCreatePresenterName);
  if (function == nullptr) {
    const char* const reason = dlerror();  // begins with the path
    Fail(reason == nullptr ? path + " cannot be loaded" : reason);
  }
  return reinterpret_cast<CreatePresenterFunction*>(function);
}

/// Opens windows, and ends with 0 when they can be had. Standard error tells why not; what Qt says
/// before it gives up the process goes there too.
[[noreturn]] void TryInChild(int reasonFile) {
  dup2(reasonFile, STDERR_FILENO);
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  prctl(PR_SET_DUMPABLE, 0);  // core dumps that go to a program don't heed the limit
  for (const int end : {SIGABRT, SIGALRM}) signal(end, SIG_DFL);
  alarm(kPatience);
  try {
    // Nothing is cleaned up: the process goes at once.
    if (OpenWindows({}).release() != nullptr) _exit(0);
  } catch (const std::exception& error) {
    const std::string_view reason = error.what();
    if (write(STDERR_FILENO, reason.data(), reason.size()) > 0) _exit(1);
  }
  _exit(2);
}

/// The beginning of what was written to `file`.
std::string TextOf(int file) {
  std::string text(kLongestReason, '\0');
  const ssize_t count = pread(file, text.data(), text.size(), 0);
  text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return text;
}

/// What Qt gave as the reason: the first line of its part that knows displays.
std::string QtReason(std::string_view text, int end) {
  const std::size_t begin = text.find("qt.qpa.");
  if (begin == text.npos) {
    const bool waited = WIFSIGNALED(end) && WTERMSIG(end) == SIGALRM;
    return waited ? "the display does not answer" : "Qt gives up without a reason";
  }
  std::string_view line = text.substr(begin, text.find('\n', begin) - begin);
  if (const std::size_t colon = line.find(": "); colon != line.npos) line.remove_prefix(colon + 2);
  while (line.ends_with(' ')) line.remove_suffix(1);
  return std::string(line);
}

}  // namespace

void RequireWindows() {
  // Not a pipe: what Qt may start would keep it open.
  const Descriptor reasonFile(memfd_create("reason", MFD_CLOEXEC));
  if (!reasonFile.IsOpen()) Fail(ErrnoText(errno));
  signal(SIGCHLD, SIG_DFL);  // an inherited "ignore" would keep its end from us
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) Fail(ErrnoText(errno));
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(0);  // it died before that
    TryInChild(reasonFile.Get());
  }
  int end = 0;
  while (waitpid(child, &end, 0) < 0) {
    if (errno != EINTR) Fail(ErrnoText(errno));
  }
  if (end == 0) return;
  const std::string text = TextOf(reasonFile.Get());
  if (WIFEXITED(end) && WEXITSTATUS(end) == 1) throw RunError(text);
  Fail(QtReason(text, end));
}

std::unique_ptr<Presenter> OpenWindows(const std::string& title) {
  std::unique_ptr<Presenter> presenter(LoadFunction()(kPresenterVersion, title.c_str()));
  if (!presenter) Fail("mapexport-window.so belongs to another version of mapexport");
  return presenter;
}

}  // namespace mapexport
