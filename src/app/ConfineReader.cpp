#include "app/ConfineReader.h"

#include <algorithm>

#include <unistd.h>

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

}  // namespace

Confinement ConfineReader(std::span<const int> kept) {
  CloseOthers(kept);
  Confinement confinement;
  confinement.files = ForbidWriting();
  confinement.calls = FilterCalls();  // which forbids the other
  return confinement;
}

}  // namespace mapexport
