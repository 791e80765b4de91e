// Limits the files that the process reading foreign scenes can use.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process can open files and folders only for reading: nothing is created,
/// changed, renamed, removed or executed, whatever the call. It can read `scene` itself, everything
/// below the folder of `scene`, everything below /run/media (users' disks), and everything below
/// the entries of the root folder except /dev, /proc, /run and /sys. That excludes devices,
/// terminals, and other processes' data. Where the kernel can forbid it, the process can't connect
/// over TCP or to abstract sockets, or signal other processes. Open descriptors are not affected.
/// Returns why this failed (Landlock is in Linux since 5.13, and may be off), and then nothing has
/// changed except that no privileges can be gained; empty when it is in force.
std::string RestrictFiles(const std::string& scene);

}  // namespace mapexport
