// Results on standard output.
#pragma once

#include <functional>
#include <ostream>

namespace mapexport {

/// Calls `print` with standard output and checks that everything is written. Returns false when the
/// reader of a pipe has gone away, which is no error; throws RunError for every other failure.
bool PrintResult(const std::function<void(std::ostream&)>& print);

}  // namespace mapexport
