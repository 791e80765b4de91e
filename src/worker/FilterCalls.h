// The filter of system calls for the process that reads foreign scenes.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process, which must have no other thread, can only read files, use memory and
/// write to descriptors that are already open. Files can only be opened for reading; no memory can
/// be made executable; no process or thread can be started. Calls that a library may make
/// harmlessly, and unknown calls, fail with EPERM. Most calls that only an attack makes (a socket,
/// a program, memory that is writable and executable) end the process by SIGSYS. A filter does not
/// see file names: everything in /proc, other processes' memory included, can be read like any file
/// unless RestrictFiles is in force, too. Returns why the filter could not be set, and then nothing
/// has changed except that no privileges can be gained; empty when it is in force.
std::string FilterCalls();

}  // namespace mapexport
