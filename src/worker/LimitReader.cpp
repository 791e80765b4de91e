#include "worker/LimitReader.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <utility>

#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "system/RunError.h"
#include "worker/AddressSanitizer.h"

namespace mapexport {
namespace {

// A reader that was taken over can shut its ears to the signals that end it at its limits. So many
// seconds later comes one that nobody can.
constexpr std::uint32_t kGrace = 5;

// Libraries take address space and hardly any memory: below that even small files could not be
// read.
constexpr std::uint64_t kLeastAddressSpace = std::uint64_t{512} << 20;

// A scene file of 4 GiB or more is not read.
constexpr std::uint64_t kLargestSceneFile = 0xFFFF'FFFF;

// Side files are read one by one. Whatever is open already may have a higher number.
constexpr rlim_t kMostOpenFiles = 64;

/// The text of errno if a call failed.
std::string LackOf(int result) {
  return result == 0 ? std::string() : ErrnoText(errno);
}

/// Lowers the limit for good; why it could not be. Of processor time, the kernel grants `grace`
/// seconds after the signal.
std::string SetLimit(__rlimit_resource resource, rlim_t wanted, rlim_t grace = 0) {
  rlimit limit{};
  std::string lack = LackOf(getrlimit(resource, &limit));
  if (!lack.empty()) return lack;
  limit.rlim_cur = std::min(limit.rlim_cur, wanted);
  limit.rlim_max = std::min(limit.rlim_max, wanted + grace);
  return LackOf(setrlimit(resource, &limit));
}

/// Has SIGALRM sent in so many seconds.
std::string SetAlarm(unsigned seconds) {
  itimerval when{};
  when.it_value.tv_sec = seconds;
  return LackOf(setitimer(ITIMER_REAL, &when, nullptr));
}

/// Has the process ended by SIGKILL in so many seconds.
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

/// The process's group as a path that begins with '/', without one at its end; empty for the
/// outermost.
std::string OwnGroup(const std::string& proc) {
  constexpr std::string_view kVersion2 = "0::";
  std::ifstream in(proc);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(kVersion2)) return line == "0::/" ? "" : line.substr(kVersion2.size());
  }
  return {};
}

}  // namespace

ReaderLimits LimitsOfReader(std::uint32_t seconds) {
  ReaderLimits limits;
  limits.seconds = seconds;
  const std::uint64_t memory = MemoryLimit();
  limits.fileSize = std::min(memory / 4, kLargestSceneFile);
  // AddressSanitizer takes terabytes of it.
  if (!kAddressSanitizer) {
    limits.addressSpace =
        std::max(memory / 4 * 3, kLeastAddressSpace + kLongestMessage) - kLongestMessage;
  }
  return limits;
}

LackingLimits LimitReader(const ReaderLimits& limits) {
  LackingLimits lacking;
  const auto note = [&lacking](std::string lack) {
    if (lacking.limits.empty()) lacking.limits = std::move(lack);
  };
  note(SetLimit(RLIMIT_FSIZE, limits.fileSize));
  note(SetLimit(RLIMIT_NOFILE, kMostOpenFiles));
  if (limits.addressSpace != 0) note(SetLimit(RLIMIT_AS, limits.addressSpace));
  if (limits.seconds == 0) return lacking;
  note(SetLimit(RLIMIT_CPU, limits.seconds, kGrace));
  const unsigned patience =
      limits.seconds > UINT_MAX / kPatience ? UINT_MAX : limits.seconds * kPatience;
  note(SetAlarm(patience));
  lacking.timer = EndIn(time_t{patience} + kGrace);
  return lacking;
}

std::uint64_t MemoryLimit(const std::string& proc, const std::string& groups) {
  std::uint64_t limit = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                        static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  for (std::string group = OwnGroup(proc);; group.erase(group.rfind('/'))) {
    std::uint64_t bytes = 0;
    std::ifstream in(groups + group + "/memory.max");
    if (in >> bytes) limit = std::min(limit, bytes);  // it may say "max"
    if (group.find('/') == std::string::npos) return limit;
  }
}

}  // namespace mapexport
