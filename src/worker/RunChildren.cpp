#include "worker/RunChildren.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "worker/SignalQueue.h"

namespace mapexport {
namespace {

// Enough for disks that are far away.
constexpr std::size_t kMostWaiting = 16;

class Children {
 public:
  explicit Children(const ChildrenTask& tasks) : tasks_(tasks) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;  // a child then computes to its end
    computedReading_ = Descriptor(ends[0]);
    computedWriting_ = Descriptor(ends[1]);
  }
  ~Children() { Pass(SIGKILL); }
  Children(const Children&) = delete;
  Children& operator=(const Children&) = delete;

  bool Idle() const { return running_.empty(); }

  /// Starts as many as may run.
  void Start() {
    for (; next_ < tasks_.count && Computing() < tasks_.mostAtOnce &&
           running_.size() < tasks_.mostAtOnce + kMostWaiting;
         ++next_) {
      const std::uint64_t memory = tasks_.memoryOf(next_);
      if (!Idle() && (memory > tasks_.memory || used_ > tasks_.memory - memory)) return;
      try {
        running_.push_back({next_, memory, RunningChild(TaskOf(next_))});
      } catch (const ChildError& error) {
        if (!Idle()) return;  // another's end may help
        tasks_.ended(next_, {ChildEnd::kCannotHandOver, 0, error.what(), {}, {}});
        continue;
      }
      used_ += memory;
    }
  }

  /// Takes out those that have ended. With `interrupted`, waits for all of them.
  void Collect(bool interrupted) {
    for (std::size_t index = 0;
         read(computedReading_.Get(), &index, sizeof index) == ssize_t{sizeof index};) {
      for (Running& each : running_) each.computing = each.computing && each.index != index;
    }
    for (auto each = running_.begin(); each != running_.end();) {
      std::optional<ChildOutcome> outcome = Outcome(*each, interrupted);
      if (!outcome) {
        ++each;
        continue;
      }
      const std::size_t index = each->index;
      used_ -= each->memory;
      each = running_.erase(each);
      if (!interrupted || outcome->end == ChildEnd::kDone) {
        tasks_.ended(index, std::move(*outcome));
      }
    }
  }

  void Pass(int signal) const {
    for (const Running& each : running_) kill(each.child.Id(), signal);
  }

 private:
  struct Running {
    std::size_t index;
    std::uint64_t memory;
    RunningChild child;
    bool computing = true;
  };

  std::size_t Computing() const {
    return static_cast<std::size_t>(std::ranges::count(running_, true, &Running::computing));
  }

  ChildTask TaskOf(std::size_t index) {
    ChildTask task = tasks_.task(index, Computed(index));
    task.run = [this, run = std::move(task.run)](FdOutput& output) {
      running_.clear();  // closes the files of the others: each child has the whole limit of files
      return run(output);
    };
    return task;
  }

  /// What the child of that index calls.
  std::function<void()> Computed(std::size_t index) const {
    return [this, index, parent = getpid()] {
      // If it fails, the child computes to its end.
      static_cast<void>(!write(computedWriting_.Get(), &index, sizeof index));
      kill(parent, SIGCHLD);
    };
  }

  static std::optional<ChildOutcome> Outcome(Running& running, bool wait) {
    try {
      return wait ? running.child.Wait() : running.child.Poll();
    } catch (const ChildError& error) {
      return ChildOutcome{ChildEnd::kCannotHandOver, 0, error.what(), {}, {}};
    }
  }

  const ChildrenTask& tasks_;
  Descriptor computedReading_;  ///< the indices of those that have computed
  Descriptor computedWriting_;
  std::size_t next_ = 0;
  std::uint64_t used_ = 0;  ///< bytes
  std::list<Running> running_;
};

}  // namespace

int RunChildren(const ChildrenTask& tasks) {
  const SignalQueue signals;
  Children children(tasks);
  for (;;) {
    children.Start();
    if (children.Idle()) return 0;
    if (tasks.meanwhile) tasks.meanwhile();
    const int signal = signals.Next(std::chrono::seconds(1));
    const bool interrupted = signal != 0 && signal != SIGCHLD;
    if (interrupted) children.Pass(signal);
    children.Collect(interrupted);
    if (interrupted) return signal;
  }
}

}  // namespace mapexport
