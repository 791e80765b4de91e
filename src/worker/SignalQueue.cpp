#include "worker/SignalQueue.h"

#include <ctime>

#include <sys/signalfd.h>

namespace mapexport {

SignalQueue::SignalQueue() {
  sigemptyset(&awaited_);
  sigaddset(&awaited_, SIGCHLD);
  sigprocmask(SIG_BLOCK, &awaited_, &before_);
  for (const int signal : HoldInterrupts::kSignals) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    // Blocked ones are reported even if they are ignored, as with nohup.
    if (action.sa_handler != SIG_IGN) sigaddset(&awaited_, signal);
  }
  readable_ = Descriptor(signalfd(-1, &awaited_, SFD_CLOEXEC | SFD_NONBLOCK));
}

SignalQueue::~SignalQueue() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int SignalQueue::Next(std::chrono::milliseconds most) const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(most);
  const timespec wait{seconds.count(), std::chrono::nanoseconds(most - seconds).count()};
  const int signal = sigtimedwait(&awaited_, nullptr, &wait);
  return signal < 0 ? 0 : signal;
}

}  // namespace mapexport
