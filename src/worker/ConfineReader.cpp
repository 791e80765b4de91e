#include "worker/ConfineReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <unistd.h>

#include "worker/DropCapabilities.h"
#include "worker/FilterCalls.h"
#include "worker/RestrictFiles.h"

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

/// Build farms keep secrets there, which reading needs none of. /proc shows the same bytes.
void EraseEnvironment() {
  for (char** each = environ; each != nullptr && *each != nullptr; ++each) {
    explicit_bzero(*each, std::strlen(*each));
  }
  clearenv();
}

}  // namespace

Confinement ConfineReader(const std::string& scene, std::span<const int> kept,
                          const ReaderLimits& limits) {
  CloseOthers(kept);
  EraseEnvironment();
  LackingLimits lacking = LimitReader(limits);
  Confinement confinement;
  confinement.limits = std::move(lacking.limits);
  confinement.timer = std::move(lacking.timer);
  confinement.capabilities = DropCapabilities();
  confinement.files = RestrictFiles(scene);
  confinement.calls = FilterCalls();  // which forbids the others
  return confinement;
}

}  // namespace mapexport
