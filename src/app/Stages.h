// The stages of a run: measures them and shows the current one.
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
/// elapsed seconds in one line of standard error. A thread rewrites that line and erases it when
/// the stage ends. Elsewhere nothing is printed.
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

  /// Ends the current stage and begins another. The first call may start the thread, so a process
  /// that forks must do so before it.
  void Begin(const std::string& name);
  /// Ends the stage.
  void End();
  /// Runs `action` in a stage, then resumes the stage that it interrupted.
  void During(const std::string& name, const std::function<void()>& action);

  /// The stages that have ended, each once with the sum of its times.
  std::span<const Time> Times() const { return times_; }

 private:
  void Show();

  const bool shown_;
  std::vector<Time> times_;

  std::mutex mutex_;  ///< guards the members below
  std::condition_variable changed_;
  std::string current_;  ///< empty between stages
  std::chrono::steady_clock::time_point begin_;
  std::uint64_t turn_ = 0;  ///< counts calls of Begin
  bool over_ = false;
  std::thread thread_;
};

}  // namespace mapexport
