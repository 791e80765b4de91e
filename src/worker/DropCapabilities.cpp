#include "worker/DropCapabilities.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "system/RunError.h"

namespace mapexport {

std::string DropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  // The numbers up to 31, and those above.
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

}  // namespace mapexport
