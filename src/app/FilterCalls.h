// The filter of system calls for the process that reads foreign scenes.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process, which must have no other thread, can do to the system only what
/// reading files, using memory and writing to descriptors that are open already takes. Files open
/// for reading alone; no memory can be made executable; no process or thread can be started. What a
/// library may try in innocence fails with EPERM; what only an attack tries (a socket, a program,
/// another's memory, memory that is writable and executable) ends the process by SIGSYS. Returns
/// why the filter could not be set, and then nothing has changed but that no privileges can be
/// gained; empty when it is in force.
std::string FilterCalls();

}  // namespace mapexport
