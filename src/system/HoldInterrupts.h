// Keeps the signals that end the program waiting while files are in a state that must not stay.
#pragma once

#include <array>

#include <signal.h>

namespace mapexport {

/// Keeps those signals waiting while it lives.
class HoldInterrupts {
 public:
  /// Those that end a process unless it handles them, and come from outside of it: from people,
  /// from who started it, and from its limits and timers.
  static constexpr std::array kSignals{SIGINT,  SIGTERM, SIGHUP,   SIGQUIT, SIGXCPU,
                                       SIGALRM, SIGUSR1, SIGUSR2,  SIGPROF, SIGVTALRM,
                                       SIGPOLL, SIGPWR,  SIGSTKFLT};

  HoldInterrupts();
  ~HoldInterrupts();
  HoldInterrupts(const HoldInterrupts&) = delete;
  HoldInterrupts& operator=(const HoldInterrupts&) = delete;

 private:
  sigset_t before_;
};

}  // namespace mapexport
