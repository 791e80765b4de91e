// Leaves nothing temporary behind when a signal, or a library's exit(), ends the program.
#pragma once

#include <cstddef>
#include <string>

namespace mapexport {

/// During the lifetime of an object, the signals of HoldInterrupts, and exit(), remove a file and
/// then its folder before the program ends. At most kMostAtOnce objects at a time, all of one
/// thread.
class InterruptCleanup {
 public:
  static constexpr int kMostAtOnce = 4;

  InterruptCleanup(std::string folder, std::string file);
  ~InterruptCleanup();
  InterruptCleanup(const InterruptCleanup&) = delete;
  InterruptCleanup& operator=(const InterruptCleanup&) = delete;

 private:
  std::string folder_;
  std::string file_;
  std::size_t slot_;
};

}  // namespace mapexport
