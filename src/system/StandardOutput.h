// Results on standard output.
#pragma once

#include <functional>
#include <ostream>

namespace mapexport {

/// Lets `print` write to standard output and sees to it that all of it arrives. Returns false when
/// the reader has gone away, which is no error of anyone; throws RunError for every other failure.
bool PrintResult(const std::function<void(std::ostream&)>& print);

}  // namespace mapexport
