// The stages of a run: how long each takes, and which one a person is waiting for.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace mapexport {

/// Times stages. On a terminal, a stage that takes longer than about a second is shown with its
/// elapsed seconds in one line of standard error, rewritten in place by a thread of its own and
/// erased at the stage's end; elsewhere nothing is printed.
class Stages {
 public:
  struct Time {
    std::string name;
    std::chrono::steady_clock::duration duration{};
  };

  /// With `quiet` nothing is shown.
  explicit Stages(bool quiet);
  ~Stages();
  Stages(const Stages&) = delete;
  Stages& operator=(const Stages&) = delete;

  /// Ends the stage before and begins another. The first call may start the thread, so a process
  /// that forks must do it before.
  void Begin(const std::string& name);
  /// Ends the stage.
  void End();
  /// Does `action` in a stage of its own; the stage that it interrupts goes on afterwards.
  void During(const std::string& name, const std::function<void()>& action);

  /// The stages that have ended, each once with the sum of its times.
  std::span<const Time> Times() const { return times_; }

 private:
  void Show();

  const bool shown_;
  std::vector<Time> times_;

  std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  std::string current_;  ///< empty between stages
  std::chrono::steady_clock::time_point begin_;
  std::uint64_t turn_ = 0;  ///< counts beginnings
  bool over_ = false;
  std::thread thread_;
};

}  // namespace mapexport
