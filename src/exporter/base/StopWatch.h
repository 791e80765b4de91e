// Measures the milliseconds between two moments and reports them to the debug log.
#pragma once

#include <cstdint>

namespace mapexport {

class StopWatch {
 public:
  void Start();
  void Stop();
  /// Logs `label`, " took ", the milliseconds between Start and Stop and " msec."; 0 without a
  /// Start.
  void Report(const char* label) const;

 private:
  std::uint32_t start_ = 0;  ///< ms of the system's clock, which wraps around
  std::uint32_t stop_ = 0;
};

}  // namespace mapexport
