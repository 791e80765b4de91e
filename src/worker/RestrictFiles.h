// Keeps the process that reads foreign scenes to reading, and to files that may be a scene's.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process can open files and folders for reading alone: nothing is created,
/// changed, renamed, removed or executed, whatever the call. What can be read lies below an entry
/// of the outermost folder other than /dev, /proc, /run and /sys, below /run/media, where people's
/// disks are, or below the folder of `scene`, wherever that is; and `scene` itself. That leaves out
/// devices, terminals, and what the system shows of other processes. Where the kernel knows how,
/// the process neither connects to anything over TCP or to abstract sockets, nor sends other
/// processes signals. What is open stays as it is. Returns why this can't be had (Landlock is in
/// Linux since 5.13, and may be off), and then nothing has changed but that no privileges can be
/// gained; empty when it is in force.
std::string RestrictFiles(const std::string& scene);

}  // namespace mapexport
