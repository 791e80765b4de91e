// Runs many tasks, each in a child process, several at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "worker/RunInChild.h"

namespace mapexport {

struct ChildrenTask {
  std::size_t count = 0;
  /// The most children that compute at the same time. Some more may wait for the disk.
  std::size_t mostAtOnce = 1;
  /// The children that run at the same time need no more memory than this, unless one alone does.
  std::uint64_t memory = 0;  ///< bytes
  std::function<std::uint64_t(std::size_t index)> memoryOf;
  /// The child calls `computed` when all that is left for it is to wait for the disk.
  std::function<ChildTask(std::size_t index, std::function<void()> computed)> task;
  /// Called in the order in which they end. A child that can't be started counts as ended with
  /// kCannotHandOver.
  std::function<void(std::size_t index, ChildOutcome outcome)> ended;
  std::function<void()> meanwhile;  ///< called whenever a child has ended, and every second
};

/// Starts the tasks in their order and waits for all. When one of HoldInterrupts' signals comes, no
/// further task is started, and the running children get it, too. Returns that signal once they
/// have ended, without calls of `ended` for those that it ended; otherwise 0. There must be no
/// other thread. Throws what the functions throw, after it has killed the children.
int RunChildren(const ChildrenTask& tasks);

}  // namespace mapexport
