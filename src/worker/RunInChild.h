// Runs tasks in child processes and returns their results: the only place that forks.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

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
  /// Runs in the parent meanwhile, by RunInChild. May be empty.
  std::function<void()> meanwhile = {};
  ProcessLimits limits = {};
  /// The scene that the child will read, if ConfineReader is to confine it first.
  std::optional<std::string> confinedTo = {};
  std::vector<int> kept = {};  ///< further descriptors that a confined child keeps
  /// Whether the child keeps its terminal, standard input and standard output; its standard error
  /// then goes to `output`. Otherwise it has none of these, and its output is dropped.
  bool hasTerminal = false;
  int signalOfOrphans = SIGKILL;  ///< ends the child when its parent ends
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

/// A child that runs a task. Failures there end only the child. It ends with its parent, signals
/// end it as usual, nothing is destroyed at its end, and it leaves no core dump.
class RunningChild {
 public:
  /// Starts it. There must be no other thread. Throws ChildError.
  explicit RunningChild(const ChildTask& task);

  pid_t Id() const { return id_; }
  /// Waits for its end. To be called once. Throws ChildError, and BadMessage when the record of the
  /// confinement is damaged.
  ChildOutcome Wait();
  /// The same, but returns nothing, and can be called again, while the child is running.
  std::optional<ChildOutcome> Poll();

 private:
  std::optional<ChildOutcome> End(int waitOptions);

  HandOverFiles files_;
  bool confined_;
  ProcessLimits limits_;
  std::chrono::steady_clock::time_point start_;
  pid_t id_;
};

/// Runs the task in a child and waits for its end. Throws what RunningChild and `meanwhile` throw.
ChildOutcome RunInChild(const ChildTask& task);

/// The system's text for a signal.
std::string SignalText(int signal);

}  // namespace mapexport
