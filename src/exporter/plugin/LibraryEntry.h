// The library's entry function and its resource texts.
#pragma once

#include "host/Resources.h"

namespace mapexport {

/// Called at every load and unload of the library with its module handle, which it keeps. Its first
/// call seeds the random generator and makes the host's and the system's controls available; an
/// exception of theirs leaves it. Always true.
bool LibraryEntry(HINSTANCE module);

/// The library's text `id`, in the one buffer that the next call overwrites; null before the
/// library has a module handle and for an id without text.
const char* GetResourceString(int id);

}  // namespace mapexport
