// Loads the library of windows, which only --dialog needs.
#pragma once

#include <memory>
#include <string>

#include "console/Presenter.h"

namespace mapexport {

/// Throws RunError when no window can be shown: the library is missing, has another version, or
/// finds no display. Tries this in a child process, so that this process keeps running, without
/// threads.
void RequireWindows();

/// A presenter whose owner window has that title. Without a display Qt ends the process. Throws
/// RunError.
std::unique_ptr<Presenter> OpenWindows(const std::string& title);

}  // namespace mapexport
