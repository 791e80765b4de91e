#include "app/InterruptCleanup.h"

#include <array>
#include <utility>

#include <unistd.h>

namespace mapexport {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

// What the handler removes; written only while the signals wait.
const char* guardedFolder = nullptr;
const char* guardedFile = nullptr;

void RemoveAndEnd(int signal) {
  unlink(guardedFile);
  rmdir(guardedFolder);
  ::signal(signal, SIG_DFL);
  raise(signal);
}

}  // namespace

InterruptCleanup::InterruptCleanup(std::string folder, std::string file)
    : folder_(std::move(folder)), file_(std::move(file)) {
  const HoldInterrupts hold;
  guardedFolder = folder_.c_str();
  guardedFile = file_.c_str();
  for (const int signal : kSignals) {
    // Who started the program to ignore a signal (nohup) means it.
    if (::signal(signal, RemoveAndEnd) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

InterruptCleanup::~InterruptCleanup() {
  const HoldInterrupts hold;
  for (const int signal : kSignals) {
    if (::signal(signal, SIG_DFL) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

HoldInterrupts::HoldInterrupts() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : kSignals) sigaddset(&held, signal);
  sigprocmask(SIG_BLOCK, &held, &before_);
}

HoldInterrupts::~HoldInterrupts() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace mapexport
