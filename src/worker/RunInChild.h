// Runs a task in a child process and takes over its result: the one place where we fork.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "worker/HandOver.h"
#include "worker/LimitProcess.h"

namespace mapexport {

struct ChildTask {
  /// Runs in the child. Writes what is large to `output`, a file in memory, and returns a message,
  /// put together of parts (HandOver.h). It may throw; a ChildError says that there is a result
  /// which can't be handed over.
  std::function<std::string(FdOutput& output)> run;
  /// Runs in the parent meanwhile. May be empty.
  std::function<void()> meanwhile = {};
  ProcessLimits limits = {};
  /// The scene that the child is to read, if ConfineReader is to confine it first.
  std::optional<std::string> confinedTo = {};
  std::vector<int> kept = {};  ///< descriptors that a confined child keeps beside the hand-over's
  /// Whether the child keeps its terminal, standard input and standard output; what it prints to
  /// standard error goes to `output` then. Otherwise it has none of these, and what it prints is
  /// lost.
  bool hasTerminal = false;
};

/// How a child ended. The exit statuses are none that a runtime or a sanitizer uses.
enum class ChildEnd {
  kDone = 0,
  kRefused = 71,  ///< the task threw; the message is its reason
  kMemoryRanOut = 72,
  kCannotHandOver = 73,  ///< the message may be the reason
  kSignal = 256,         ///< no exit status: a signal ended it
  kOtherStatus
};

/// What is left of a child. Neither message nor output can be trusted.
struct ChildOutcome {
  ChildEnd end;
  int number;  ///< of the signal, the one at a limit for which it was killed; or the exit status
  /// Empty when it can't be read; the text of an error is cut where it is too long.
  std::string message;
  Descriptor output;
  /// As the child said it before it ran the task, and could not change it afterwards. None where it
  /// did not, and unless it ended with kDone.
  std::optional<Confinement> confinement;
};

/// Runs the task in a child and waits for its end. Whatever happens there ends only the child: it
/// ends with its parent, signals end it as ever, nothing is destroyed at its end, and it leaves no
/// core dump. There must be no other thread. Throws ChildError, BadMessage where the child's word
/// about its confinement is damaged, and what `meanwhile` throws.
ChildOutcome RunInChild(const ChildTask& task);

/// The system's text for a signal.
std::string SignalText(int signal);

}  // namespace mapexport
