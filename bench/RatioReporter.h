// Benchmark output with the ratios that matter at its end.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace mapexport {

/// The console's table, then one line per pair of benchmarks that were run: how many times as long
/// the first one took. Times on a busy machine mean little; ratios within one run mean more.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(OO_Tabular) {}

  /// To be told: the time of benchmark `slow` divided by that of `fast`.
  void Compare(std::string label, std::string slow, std::string fast) {
    pairs_.push_back({std::move(label), std::move(slow), std::move(fast)});
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (!run.error_occurred) times_[run.run_name.function_name] = run.GetAdjustedRealTime();
    }
  }

  void PrintRatios() const {
    std::puts("");
    for (const Pair& pair : pairs_) {
      const auto slow = times_.find(pair.slow);
      const auto fast = times_.find(pair.fast);
      if (slow == times_.end() || fast == times_.end()) continue;
      std::printf("%-58s %8.2f\n", pair.label.c_str(), slow->second / fast->second);
    }
  }

 private:
  struct Pair {
    std::string label;
    std::string slow;
    std::string fast;
  };

  std::vector<Pair> pairs_;
  std::map<std::string, double> times_;
};

}  // namespace mapexport
