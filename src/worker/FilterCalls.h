// The filter of system calls for the process that reads foreign scenes.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process, which must have no other thread, can do to the system only what
/// reading files, using memory and writing to descriptors that are open already takes. Files open
/// for reading alone; no memory can be made executable; no process or thread can be started. What a
/// library may try in innocence fails with EPERM, and so does whatever is not known; most of what
/// only an attack tries (a socket, a program, memory that is writable and executable) ends the
/// process by SIGSYS. A filter sees no names: what is behind /proc, other processes' memory
/// included, can be read like any file unless RestrictFiles is in force, too. Returns
/// why the filter could not be set, and then nothing has changed but that no privileges can be
/// gained; empty when it is in force.
std::string FilterCalls();

}  // namespace mapexport
