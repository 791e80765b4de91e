// A process of our own for code that may break down.
#pragma once

#include <sys/types.h>

namespace mapexport {

/// Called first in a process that `parent` has just forked: it ends with its parent, a signal ends
/// it as ever, nothing that it prints is seen, it has no terminal, and it leaves no core dump.
void BecomeWorker(pid_t parent);

}  // namespace mapexport
