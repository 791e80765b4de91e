#include "output/InterruptCleanup.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include "system/HoldInterrupts.h"

namespace mapexport {
namespace {

struct Guarded {
  const char* folder = nullptr;  ///< null: the slot is free
  const char* file = nullptr;
};

// What the handler removes; written only while signals are held back.
std::array<Guarded, InterruptCleanup::kMostAtOnce> guarded;

bool NothingIsGuarded() {
  return std::ranges::all_of(guarded, [](const Guarded& each) { return each.folder == nullptr; });
}

void Remove() {
  for (const Guarded& each : guarded) {
    if (each.folder == nullptr) continue;
    unlink(each.file);
    rmdir(each.folder);
  }
}

pthread_t guardingThread;

void RemoveAndEnd(int signal) {
  // The signal may interrupt a library's thread. The list belongs to this thread, which may be
  // holding signals back, so pass the signal on to it.
  if (pthread_equal(pthread_self(), guardingThread) == 0) {
    pthread_kill(guardingThread, signal);
    return;
  }
  Remove();
  ::signal(signal, SIG_DFL);
  raise(signal);
}

}  // namespace

InterruptCleanup::InterruptCleanup(std::string folder, std::string file)
    : folder_(std::move(folder)), file_(std::move(file)) {
  const HoldInterrupts hold;
  const bool isFirst = NothingIsGuarded();
  const auto slot = std::ranges::find(guarded, nullptr, &Guarded::folder);
  if (slot == guarded.end()) throw std::logic_error("too many temporary files at once");
  slot_ = static_cast<std::size_t>(slot - guarded.begin());
  *slot = {folder_.c_str(), file_.c_str()};
  if (!isFirst) return;
  guardingThread = pthread_self();
  // A library may call exit: Qt does when the display goes away.
  static const bool registered = std::atexit(Remove) == 0;
  if (!registered) throw std::logic_error("no more functions can be called at exit");
  for (const int signal : HoldInterrupts::kSignals) {
    // If the program was started with a signal ignored (nohup), it stays ignored.
    if (::signal(signal, RemoveAndEnd) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

InterruptCleanup::~InterruptCleanup() {
  const HoldInterrupts hold;
  guarded[slot_] = {};
  if (!NothingIsGuarded()) return;
  for (const int signal : HoldInterrupts::kSignals) {
    if (::signal(signal, SIG_DFL) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

}  // namespace mapexport
