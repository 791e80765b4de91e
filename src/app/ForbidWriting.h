// Keeps the process that reads foreign scenes from changing files, by the file system's own rules.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process can open files and folders for reading alone: nothing is created,
/// changed, renamed, removed or executed, whatever the call. Where the kernel knows how, it neither
/// connects to anything over TCP or to abstract sockets, nor sends other processes signals. What is
/// open stays as it is. Returns why this can't be had (Landlock is in Linux since 5.13, and may be
/// off), and then nothing has changed but that no privileges can be gained; empty when it is in
/// force.
std::string ForbidWriting();

}  // namespace mapexport
