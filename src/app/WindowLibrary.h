// Loads the library of windows, which only --dialog needs.
#pragma once

#include <memory>
#include <string>

#include "console/Presenter.h"

namespace mapexport {

/// Throws RunError when no window can be shown: the library is missing, does not fit, or finds no
/// display. Tries it in a process of its own, which leaves this one without threads and alive.
void RequireWindows();

/// A presenter whose own window has that title. Where there is no display the process ends. Throws
/// RunError.
std::unique_ptr<Presenter> OpenWindows(const std::string& title);

}  // namespace mapexport
