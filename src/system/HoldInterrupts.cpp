#include "system/HoldInterrupts.h"

namespace mapexport {

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
