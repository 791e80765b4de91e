#include "worker/LimitProcess.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <istream>
#include <string_view>
#include <utility>

#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "system/RunError.h"

namespace mapexport {
namespace {

// A process that was taken over can ignore the signals at its limits. So many seconds later SIGKILL
// follows.
constexpr std::uint32_t kGrace = 5;

/// The text of errno if a call failed.
std::string LackOf(int result) {
  return result == 0 ? std::string() : ErrnoText(errno);
}

/// Lowers the limit for good, if there is one; returns why that failed. For processor time the
/// kernel sends SIGKILL `grace` seconds after the signal.
std::string SetLimit(__rlimit_resource resource, rlim_t wanted, rlim_t grace = 0) {
  if (wanted == 0) return {};
  rlimit limit{};
  std::string lack = LackOf(getrlimit(resource, &limit));
  if (!lack.empty()) return lack;
  limit.rlim_cur = std::min(limit.rlim_cur, wanted);
  limit.rlim_max = std::min(limit.rlim_max, wanted + grace);
  return LackOf(setrlimit(resource, &limit));
}

/// Requests SIGALRM in so many seconds.
std::string SetAlarm(std::uint32_t seconds) {
  itimerval when{};
  when.it_value.tv_sec = seconds;
  return LackOf(setitimer(ITIMER_REAL, &when, nullptr));
}

/// Requests SIGKILL in so many seconds.
std::string EndIn(time_t seconds) {
  sigevent event{};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGKILL;
  timer_t timer{};
  itimerspec when{};
  when.it_value.tv_sec = seconds;
  std::string lack = LackOf(timer_create(CLOCK_MONOTONIC, &event, &timer));
  return lack.empty() ? LackOf(timer_settime(timer, 0, &when, nullptr)) : lack;
}

/// The process's group as a path that begins with '/' and does not end with one; empty for the root
/// group.
std::string OwnGroup(const std::string& proc) {
  constexpr std::string_view kVersion2 = "0::";
  std::ifstream in(proc);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(kVersion2)) return line == "0::/" ? "" : line.substr(kVersion2.size());
  }
  return {};
}

/// Calls `use` with the control file of that name in the process's group and in those above it,
/// where there is one.
void InGroups(const std::string& proc, const std::string& groups, const std::string& name,
              const std::function<void(std::istream&)>& use) {
  for (std::string group = OwnGroup(proc);; group.erase(group.rfind('/'))) {
    std::ifstream in(std::string(groups).append(group).append("/").append(name));
    if (in) use(in);
    if (group.find('/') == std::string::npos) return;
  }
}

}  // namespace

LackingLimits LimitProcess(const ProcessLimits& limits) {
  LackingLimits lacking;
  const auto note = [&lacking](std::string lack) {
    if (lacking.limits.empty()) lacking.limits = std::move(lack);
  };
  note(SetLimit(RLIMIT_FSIZE, limits.fileSize));
  note(SetLimit(RLIMIT_NOFILE, limits.openFiles));
  note(SetLimit(RLIMIT_AS, limits.addressSpace));
  note(SetLimit(RLIMIT_CPU, limits.processorSeconds, kGrace));
  if (limits.clockSeconds == 0) return lacking;
  note(SetAlarm(limits.clockSeconds));
  lacking.timer = EndIn(time_t{limits.clockSeconds} + kGrace);
  return lacking;
}

std::uint64_t MemoryLimit(const std::string& proc, const std::string& groups) {
  std::uint64_t limit = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                        static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  InGroups(proc, groups, "memory.max", [&limit](std::istream& in) {
    std::uint64_t bytes = 0;
    if (in >> bytes) limit = std::min(limit, bytes);  // it may say "max"
  });
  return limit;
}

std::uint64_t FreeMemory() {
  constexpr std::uint64_t kKilo = 1024;
  std::uint64_t free = MemoryLimit();
  std::ifstream in("/proc/meminfo");
  for (std::string name, rest; in >> name; std::getline(in, rest)) {
    std::uint64_t kilobytes = 0;
    if (name == "MemAvailable:" && in >> kilobytes) free = std::min(free, kilobytes * kKilo);
  }
  return free;
}

std::size_t ProcessorLimit(const std::string& proc, const std::string& groups) {
  cpu_set_t allowed;
  // It fails on a machine with more processors than the set holds.
  long limit = sched_getaffinity(0, sizeof allowed, &allowed) == 0 ? CPU_COUNT(&allowed)
                                                                   : sysconf(_SC_NPROCESSORS_ONLN);
  InGroups(proc, groups, "cpu.max", [&limit](std::istream& in) {
    long quota = 0;
    long period = 0;
    // It may say "max".
    if (in >> quota >> period && period > 0) limit = std::min(limit, (quota - 1) / period + 1);
  });
  return static_cast<std::size_t>(std::max(limit, 1L));
}

}  // namespace mapexport
