// Runs a task in a child process and returns its result: the only place that forks.
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
  /// Runs in the child. Writes large data to `output`, a memory file, and returns a message made
  /// with HandOver.h. It may throw; ChildError means that there is a result which can't be handed
  /// over.
  std::function<std::string(FdOutput& output)> run;
  /// Runs in the parent meanwhile. May be empty.
  std::function<void()> meanwhile = {};
  ProcessLimits limits = {};
  /// The scene that the child will read, if ConfineReader is to confine it first.
  std::optional<std::string> confinedTo = {};
  std::vector<int> kept = {};  ///< further descriptors that a confined child keeps
  /// Whether the child keeps its terminal, standard input and standard output; its standard error
  /// then goes to `output`. Otherwise it has none of these, and its output is dropped.
  bool hasTerminal = false;
};

/// How a child ended. The exit statuses differ from those of runtimes and sanitizers.
enum class ChildEnd {
  kDone = 0,
  kRefused = 71,  ///< the task threw; the message is its reason
  kMemoryRanOut = 72,
  kCannotHandOver = 73,  ///< the message may be the reason
  kSignal = 256,         ///< no exit status: a signal ended it
  kOtherStatus
};

/// The result of a child. Neither message nor output can be trusted.
struct ChildOutcome {
  ChildEnd end;
  /// The exit status or the signal: that at a limit, if the child was killed for ignoring it.
  int number;
  /// Empty when it can't be read; an error's text is cut when it is too long.
  std::string message;
  Descriptor output;
  /// As the child recorded it before it ran the task; the child could not change it afterwards.
  /// Nothing if it did not, or unless the child ended with kDone.
  std::optional<Confinement> confinement;
};

/// Runs the task in a child and waits for its end. Failures there end only the child. It ends with
/// its parent, signals end it as usual, nothing is destroyed at its end, and it leaves no core
/// dump. There must be no other thread. Throws ChildError, BadMessage when the record of the
/// confinement is damaged, and what `meanwhile` throws.
ChildOutcome RunInChild(const ChildTask& task);

/// The system's text for a signal.
std::string SignalText(int signal);

}  // namespace mapexport
