#include "app/WindowLibrary.h"

#include <cstdint>
#include <filesystem>
#include <new>
#include <string_view>

#include <dlfcn.h>
#include <fmt/format.h>
#include <signal.h>

#include "app/FindLibrary.h"
#include "system/FdOutput.h"
#include "system/RunError.h"
#include "worker/HandOver.h"
#include "worker/RunInChild.h"

namespace mapexport {
namespace {

// After so many seconds without an answer, the display counts as missing.
constexpr std::uint32_t kPatience = 60;
constexpr std::uint64_t kLongestReason = 16384;

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

/// Qt's reason: the first line of its category for displays.
std::string QtReason(std::string_view text, const ChildOutcome& outcome) {
  const std::size_t begin = text.find("qt.qpa.");
  if (begin == text.npos) {
    const bool waited = outcome.end == ChildEnd::kSignal && outcome.number == SIGALRM;
    return waited ? "the display does not answer" : "Qt aborts without a reason";
  }
  std::string_view line = text.substr(begin, text.find('\n', begin) - begin);
  if (const std::size_t colon = line.find(": "); colon != line.npos) line.remove_prefix(colon + 2);
  while (line.ends_with(' ')) line.remove_suffix(1);
  return std::string(line);
}

}  // namespace

void RequireWindows() {
  ChildTask task;
  task.run = [](FdOutput&) {
    // The child ends without cleaning up.
    static_cast<void>(OpenWindows({}).release());
    return std::string();
  };
  task.limits.clockSeconds = kPatience;
  task.hasTerminal = true;  // which some of Qt's platforms look at
  try {
    const ChildOutcome outcome = RunInChild(task);
    if (outcome.end == ChildEnd::kDone) return;
    if (outcome.end == ChildEnd::kMemoryRanOut) throw std::bad_alloc();
    if (outcome.end == ChildEnd::kRefused && !outcome.message.empty()) {
      throw RunError(outcome.message);  // names the option
    }
    if (!outcome.message.empty()) Fail(outcome.message);
    // Qt prints the reason before it aborts.
    Fail(QtReason(BytesOf(outcome.output, 0, kLongestReason), outcome));
  } catch (const ChildError& error) {
    Fail(error.what());
  }
}

std::unique_ptr<Presenter> OpenWindows(const std::string& title) {
  std::unique_ptr<Presenter> presenter(LoadFunction()(kPresenterVersion, title.c_str()));
  if (!presenter) Fail("mapexport-window.so belongs to another version of mapexport");
  return presenter;
}

}  // namespace mapexport
