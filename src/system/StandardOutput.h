// Results on standard output.
#pragma once

#include <functional>
#include <ostream>
#include <string_view>

namespace mapexport {

/// Whether the path of an output means standard output, which is written to and never replaced,
/// whatever it leads to: "-", "/dev/stdout" and its other names.
bool IsStandardOutput(std::string_view path);

/// Lets `print` write to standard output and sees to it that all of it arrives. Returns false when
/// the reader has gone away, which is no error of anyone; throws RunError for every other failure.
bool PrintResult(const std::function<void(std::ostream&)>& print);

}  // namespace mapexport
