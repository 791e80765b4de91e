#include "worker/ConfineReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "system/RunError.h"
#include "worker/FilterCalls.h"
#include "worker/RestrictFiles.h"

namespace mapexport {
namespace {

/// The program's caller may have left any descriptors open: sockets, files for writing.
void CloseOthers(std::span<const int> kept) {
  int beyond = STDERR_FILENO + 1;
  for (const int fd : kept) beyond = std::max(beyond, fd + 1);
  for (int fd = STDERR_FILENO + 1; fd < beyond; ++fd) {
    if (std::ranges::find(kept, fd) == kept.end()) close(fd);
  }
  closefrom(beyond);
}

/// Build farms keep secrets in the environment, which reading does not need. /proc shows the same
/// bytes.
void EraseEnvironment() {
  for (char** each = environ; each != nullptr && *each != nullptr; ++each) {
    explicit_bzero(*each, std::strlen(*each));
  }
  clearenv();
}

/// Drops root's capabilities, except the one for reading others' files, if the process has it:
/// CAP_DAC_READ_SEARCH, or else CAP_DAC_OVERRIDE. Returns why that failed, and then nothing has
/// changed; empty when they are dropped.
std::string DropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  // Capabilities 0 to 31, and those above.
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (syscall(SYS_capget, &header, sets.data()) != 0) return ErrnoText(errno);

  constexpr std::uint32_t kSearch = 1U << CAP_DAC_READ_SEARCH;
  constexpr std::uint32_t kOverride = 1U << CAP_DAC_OVERRIDE;
  const std::uint32_t held = sets[0].effective;
  const std::uint32_t kept = (held & kSearch) != 0 ? kSearch : held & kOverride;
  sets = {};
  sets[0].effective = kept;
  sets[0].permitted = kept;
  return syscall(SYS_capset, &header, sets.data()) == 0 ? std::string() : ErrnoText(errno);
}

}  // namespace

Confinement ConfineReader(const std::string& scene, std::span<const int> kept,
                          const ProcessLimits& limits) {
  CloseOthers(kept);
  EraseEnvironment();
  LackingLimits lacking = LimitProcess(limits);
  Confinement confinement;
  confinement.limits = std::move(lacking.limits);
  confinement.timer = std::move(lacking.timer);
  confinement.capabilities = DropCapabilities();
  confinement.files = RestrictFiles(scene);
  confinement.calls = FilterCalls();  // last: it forbids the calls that the others make
  return confinement;
}

}  // namespace mapexport
