#include "worker/RunInChild.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/RunError.h"
#include "worker/ConfineReader.h"

namespace mapexport {
namespace {

[[noreturn]] void End(ChildEnd end) {
  // Nothing is cleaned up: destroying the result of a damaged file can crash.
  _exit(static_cast<int>(end));
}

[[noreturn]] void EndOnTerminate() {
  try {
    if (std::current_exception()) std::rethrow_exception(std::current_exception());
  } catch (const std::bad_alloc&) {
    End(ChildEnd::kMemoryRanOut);
  } catch (...) {
  }
  std::abort();
}

/// Resets signals that must end the process; the program's caller may have ignored or blocked them.
void LetSignalsEnd() {
  for (const int end : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGXCPU, SIGALRM}) {
    signal(end, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void LeaveNoCore() {
  rlimit limit{};
  getrlimit(RLIMIT_CORE, &limit);
  limit.rlim_cur = 0;
  setrlimit(RLIMIT_CORE, &limit);  // lowering one always succeeds
  prctl(PR_SET_DUMPABLE, 0);       // core dumps to a program ignore the limit
}

void SilenceStandardStreams() {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (null >= 0) {
      dup2(null, fd);
    } else {
      close(fd);
    }
  }
}

void BecomeChild(pid_t parent, const ChildTask& task, const HandOverFiles& files) {
  prctl(PR_SET_PDEATHSIG, task.signalOfOrphans);
  prctl(PR_SET_NAME, "mapexport-child");
  if (getppid() != parent) _exit(0);  // the parent died before that
  LetSignalsEnd();
  LeaveNoCore();
  if (task.hasTerminal) {
    dup2(files.Output().Get(), STDERR_FILENO);
  } else {
    setsid();  // so that /dev/tty opens no terminal of ours
    SilenceStandardStreams();
  }
  std::set_terminate(EndOnTerminate);
}

/// Applies the limits and the confinement, before any untrusted byte is read.
void Confine(const ChildTask& task, const HandOverFiles& files) {
  if (!task.confinedTo) {
    const LackingLimits lacking = LimitProcess(task.limits);
    const std::string& lack = lacking.limits.empty() ? lacking.timer.value_or("") : lacking.limits;
    if (!lack.empty()) throw ChildError("its process can't be limited: " + lack);
    return;
  }
  std::vector<int> kept = files.Numbers();
  kept.insert(kept.end(), task.kept.begin(), task.kept.end());
  files.WriteConfinement(ConfineReader(*task.confinedTo, kept, task.limits));
}

[[noreturn]] void EndWith(ChildEnd end, std::string_view reason, const HandOverFiles& files) {
  try {
    files.WriteMessage(reason);
  } catch (const ChildError&) {
    // The exit status already says so.
  }
  End(end);
}

/// Nothing may leave it: the child would go on as a second parent.
[[noreturn]] void RunTask(const ChildTask& task, const HandOverFiles& files) noexcept {
  try {
    Confine(task, files);
    FdOutput output(files.Output().Get());
    const std::string message = task.run(output);
    if (const int error = output.Finish()) throw ChildError(ErrnoText(error));
    files.WriteMessage(message);
    End(ChildEnd::kDone);
  } catch (const std::bad_alloc&) {
    End(ChildEnd::kMemoryRanOut);
  } catch (const ChildError& error) {
    EndWith(ChildEnd::kCannotHandOver, error.what(), files);
  } catch (const std::exception& error) {
    EndWith(ChildEnd::kRefused, error.what(), files);
  }
}

/// The signal that ended the child. If SIGKILL came because the child ignored the signal at its
/// limit, that signal.
int SignalOf(int status, const rusage& used, std::chrono::steady_clock::duration onClock,
             const ProcessLimits& limits) {
  const auto timeOf = [](const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
  };
  const auto isOver = [](std::uint32_t limit, auto time) {
    return limit != 0 && time > std::chrono::seconds(limit);
  };
  const int signal = WTERMSIG(status);
  if (signal != SIGKILL) return signal;
  if (isOver(limits.processorSeconds, timeOf(used.ru_utime) + timeOf(used.ru_stime))) {
    return SIGXCPU;
  }
  return isOver(limits.clockSeconds, onClock) ? SIGALRM : signal;
}

ChildEnd EndOf(int exitStatus) {
  for (const ChildEnd end :
       {ChildEnd::kDone, ChildEnd::kRefused, ChildEnd::kMemoryRanOut, ChildEnd::kCannotHandOver}) {
    if (exitStatus == static_cast<int>(end)) return end;
  }
  return ChildEnd::kOtherStatus;
}

}  // namespace

RunningChild::RunningChild(const ChildTask& task)
    : files_(task.confinedTo.has_value()),
      confined_(task.confinedTo.has_value()),
      limits_(task.limits),
      start_(std::chrono::steady_clock::now()) {
  // If SIGCHLD were ignored, the child's end would not be reported to us.
  signal(SIGCHLD, SIG_DFL);
  const pid_t parent = getpid();
  id_ = fork();
  if (id_ < 0) throw ChildError("no process can be started: " + ErrnoText(errno));
  if (id_ != 0) return;
  BecomeChild(parent, task, files_);
  RunTask(task, files_);
}

ChildOutcome RunningChild::Wait() {
  return *End(0);
}

std::optional<ChildOutcome> RunningChild::Poll() {
  return End(WNOHANG);
}

std::optional<ChildOutcome> RunningChild::End(int waitOptions) {
  int status = 0;
  rusage used{};
  pid_t ended = 0;
  while ((ended = wait4(id_, &status, waitOptions, &used)) < 0) {
    if (errno != EINTR) throw ChildError("the end of its process is unknown: " + ErrnoText(errno));
  }
  if (ended == 0) return std::nullopt;
  if (confined_) files_.SealOutput();
  if (WIFSIGNALED(status)) {
    const auto onClock = std::chrono::steady_clock::now() - start_;
    return ChildOutcome{
        ChildEnd::kSignal, SignalOf(status, used, onClock, limits_), {}, files_.TakeOutput(), {}};
  }
  const int number = WEXITSTATUS(status);
  if (EndOf(number) != ChildEnd::kDone) {
    return ChildOutcome{EndOf(number), number, files_.ReadError(), files_.TakeOutput(), {}};
  }
  return ChildOutcome{ChildEnd::kDone, number, files_.ReadMessage(), files_.TakeOutput(),
                      confined_ ? files_.ReadConfinement() : std::nullopt};
}

ChildOutcome RunInChild(const ChildTask& task) {
  RunningChild child(task);
  try {
    if (task.meanwhile) task.meanwhile();
  } catch (...) {
    kill(child.Id(), SIGKILL);
    child.Wait();
    throw;
  }
  return child.Wait();
}

std::string SignalText(int signal) {
  const char* const name = sigdescr_np(signal);
  return name == nullptr ? fmt::format("signal {}", signal) : name;
}

}  // namespace mapexport
