// Delays the signals that end the program while files are in a state that must not stay.
#pragma once

#include <array>

#include <signal.h>

namespace mapexport {

/// Blocks kSignals during its lifetime.
class HoldInterrupts {
 public:
  /// The signals that end a process by default and come from outside it: from people, from its
  /// parent process, from limits and timers.
  static constexpr std::array kSignals{SIGINT,  SIGTERM, SIGHUP,   SIGQUIT, SIGXCPU,
                                       SIGALRM, SIGUSR1, SIGUSR2,  SIGPROF, SIGVTALRM,
                                       SIGPOLL, SIGPWR,  SIGSTKFLT};

  HoldInterrupts() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : kSignals) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~HoldInterrupts() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  HoldInterrupts(const HoldInterrupts&) = delete;
  HoldInterrupts& operator=(const HoldInterrupts&) = delete;

 private:
  sigset_t before_;
};

}  // namespace mapexport
