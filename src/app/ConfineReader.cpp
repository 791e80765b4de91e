#include "app/ConfineReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <sys/resource.h>
#include <unistd.h>

#include "app/DropCapabilities.h"
#include "app/FilterCalls.h"
#include "app/ForbidWriting.h"

namespace mapexport {
namespace {

/// Whoever started the program may have left us anything: sockets, files open for writing.
void CloseOthers(std::span<const int> kept) {
  int beyond = STDERR_FILENO + 1;
  for (const int fd : kept) beyond = std::max(beyond, fd + 1);
  for (int fd = STDERR_FILENO + 1; fd < beyond; ++fd) {
    if (std::ranges::find(kept, fd) == kept.end()) close(fd);
  }
  closefrom(beyond);
}

/// Side files are read one by one. Whatever is open already may have a higher number.
void LimitDescriptors() {
  constexpr rlim_t kMost = 64;
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_max = std::min(limit.rlim_max, kMost);
  limit.rlim_cur = std::min(limit.rlim_cur, kMost);
  setrlimit(RLIMIT_NOFILE, &limit);  // lowering one always succeeds
}

/// Build farms keep secrets there, which reading needs none of. /proc shows the same bytes.
void EraseEnvironment() {
  for (char** each = environ; each != nullptr && *each != nullptr; ++each) {
    explicit_bzero(*each, std::strlen(*each));
  }
  clearenv();
}

}  // namespace

Confinement ConfineReader(std::span<const int> kept) {
  CloseOthers(kept);
  LimitDescriptors();
  EraseEnvironment();
  Confinement confinement;
  confinement.capabilities = DropCapabilities();
  confinement.files = ForbidWriting();
  confinement.calls = FilterCalls();  // which forbids the others
  return confinement;
}

}  // namespace mapexport
