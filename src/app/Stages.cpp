#include "app/Stages.h"

#include <algorithm>

#include <fmt/format.h>
#include <signal.h>

#include "system/StandardError.h"

namespace mapexport {

using std::chrono::steady_clock;

Stages::Stages(bool quiet) : shown_(!quiet && StandardErrorIsTerminal()) {}

Stages::~Stages() {
  {
    const std::scoped_lock lock(mutex_);
    // A stage that an exception ends needs no time, and recording it would need memory.
    current_.clear();
    over_ = true;
    if (shown_) EraseStatusLine();
  }
  if (!thread_.joinable()) return;
  changed_.notify_one();
  thread_.join();
}

void Stages::Begin(const std::string& name) {
  End();
  {
    const std::scoped_lock lock(mutex_);
    current_ = name;
    begin_ = steady_clock::now();
    ++turn_;
  }
  if (!shown_) return;
  changed_.notify_one();
  if (thread_.joinable()) return;
  // Signals go to the main thread, which may hold them back for a while.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread([this] { Show(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Stages::End() {
  const std::scoped_lock lock(mutex_);
  if (current_.empty()) return;
  auto time = std::ranges::find(times_, current_, &Time::name);
  if (time == times_.end()) time = times_.insert(time, {std::move(current_), {}});
  time->duration += steady_clock::now() - begin_;
  current_.clear();
  if (shown_) EraseStatusLine();
}

void Stages::During(const std::string& name, const std::function<void()>& action) {
  std::string interrupted;
  {
    const std::scoped_lock lock(mutex_);
    interrupted = current_;
  }
  Begin(name);
  action();
  if (interrupted.empty()) {
    End();
  } else {
    Begin(interrupted);
  }
}

void Stages::Show() {
  std::unique_lock lock(mutex_);
  while (!over_) {
    if (current_.empty()) {
      changed_.wait(lock);
      continue;
    }
    const std::uint64_t turn = turn_;
    const auto elapsed = steady_clock::now() - begin_;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed);
    if (seconds.count() > 0) ShowStatusLine(fmt::format("{}: {} s", current_, seconds.count()));
    const auto isOld = [&] { return over_ || current_.empty() || turn_ != turn; };
    changed_.wait_until(lock, begin_ + seconds + std::chrono::seconds(1), isOld);
  }
}

}  // namespace mapexport
