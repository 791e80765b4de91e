// Lets the person choose a file of one type.
#pragma once

#include <optional>
#include <span>

#include "host/CStr.h"
#include "host/Types.h"

namespace mapexport {

/// Shows the file-open box for the extensions (without dots) and returns the chosen path, nothing
/// when the person cancels. The box shows "(.a,.b)" and matches "*.a;*.b". Without
/// `initialDirectory` (null) the system chooses the folder.
std::optional<CStr> BrowseForFile(HWND owner, std::span<const char* const> extensions,
                                  const char* initialDirectory);

}  // namespace mapexport
