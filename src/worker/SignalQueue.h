// Receives the signals that end this process, and of ended children, one by one.
#pragma once

#include <chrono>

#include <signal.h>

#include "system/Descriptor.h"
#include "system/HoldInterrupts.h"

namespace mapexport {

/// Blocks these signals during its lifetime.
class SignalQueue {
 public:
  SignalQueue();
  ~SignalQueue();
  SignalQueue(const SignalQueue&) = delete;
  SignalQueue& operator=(const SignalQueue&) = delete;

  /// Waits for the next signal, at most that long; 0 for none.
  int Next(std::chrono::milliseconds most) const;
  /// Readable when there is a signal.
  int Get() const { return readable_.Get(); }

 private:
  sigset_t awaited_;
  sigset_t before_;
  Descriptor readable_;
  HoldInterrupts hold_;
};

}  // namespace mapexport
