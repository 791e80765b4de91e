// Takes from the process that reads foreign scenes what it can do because root started it.
#pragma once

#include <string>

namespace mapexport {

/// From now on this process has no capability but the one that reading others' files takes, if it
/// had that: CAP_DAC_READ_SEARCH, or else CAP_DAC_OVERRIDE. Returns why they could not be dropped,
/// and then nothing has changed; empty when they are gone.
std::string DropCapabilities();

}  // namespace mapexport
