#include "app/ForbidWriting.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "app/RunError.h"
#include "settings/Descriptor.h"

namespace mapexport {
namespace {

/// What landlock_create_ruleset takes; the system's header may be older than the kernel.
struct Rules {
  std::uint64_t files;
  std::uint64_t network;
  std::uint64_t scopes;
};

/// What a version of Landlock knows to forbid: so many rights each, and the size of its Rules.
struct Version {
  unsigned files;
  unsigned network;
  unsigned scopes;
  std::size_t size;
};
constexpr Version kVersions[] = {
    {13, 0, 0, 8},   // 1
    {14, 0, 0, 8},   // 2: linking and renaming between folders
    {15, 0, 0, 8},   // 3: truncating
    {15, 2, 0, 16},  // 4: TCP
    {16, 2, 0, 16},  // 5: ioctl on devices
    {16, 2, 2, 24},  // 6: abstract sockets, signals
};

constexpr std::uint64_t kReading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;

constexpr std::uint64_t Lowest(unsigned count) {
  return (std::uint64_t{1} << count) - 1;
}

}  // namespace

std::string ForbidWriting() {
  const long newest =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (newest < 1) return ErrnoText(newest < 0 ? errno : ENOSYS);
  const Version& version =
      kVersions[std::min<std::size_t>(static_cast<std::size_t>(newest), std::size(kVersions)) - 1];
  // Without exceptions to it, all of what is named is forbidden.
  const Rules rules{Lowest(version.files) & ~kReading, Lowest(version.network),
                    Lowest(version.scopes)};
  const Descriptor ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, version.size, 0)));
  if (!ruleset.IsOpen() || prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) != 0) {
    return ErrnoText(errno);
  }
  return {};
}

}  // namespace mapexport
