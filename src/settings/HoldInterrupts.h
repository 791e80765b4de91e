// Keeps the signals that end the program waiting while files are in a state that must not stay.
#pragma once

#include <array>

#include <signal.h>

namespace mapexport {

/// Keeps those signals waiting while it lives.
class HoldInterrupts {
 public:
  static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

  HoldInterrupts();
  ~HoldInterrupts();
  HoldInterrupts(const HoldInterrupts&) = delete;
  HoldInterrupts& operator=(const HoldInterrupts&) = delete;

 private:
  sigset_t before_;
};

}  // namespace mapexport
