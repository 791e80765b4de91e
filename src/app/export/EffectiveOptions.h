// The options of an export as they were in effect.
#pragma once

#include "app/export/ExportArguments.h"
#include "cli/CommandLine.h"

namespace mapexport {

/// All options that shape the output, with the values that the dialog ended with (`controls`) or
/// that were given, else their defaults; a flag that is not given is left out. Then those of the
/// given ones that don't.
GivenOptions EffectiveOptions(const GivenOptions& given, const GivenOptions& controls);

}  // namespace mapexport
