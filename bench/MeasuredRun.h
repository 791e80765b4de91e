// The timing that all benchmarks share.
#pragma once

#include <ctime>
#include <string>
#include <type_traits>
#include <utility>

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace mapexport {

/// The processor time of this process so far, in seconds.
inline double ProcessorTime() {
  std::timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// To be called once, before anything is measured. From now on blocks come from the heap, as in a
/// process that has freed the text of a scene file, whatever was allocated and freed before.
inline void SettleHeap() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
}

/// Registers a benchmark. Each run gets fresh input from `prepare`. Only `run` is timed, in
/// processor time; it returns false when it fails. Its result is destroyed outside of the timed
/// section. Free memory is given back to the system before, so that every run pays for the first
/// touch of what it allocates. Repetitions come from the command line, so that they can be
/// interleaved.
template <typename Prepare, typename Run>
void RegisterRun(const std::string& name, const Prepare& prepare, const Run& run) {
  const auto measure = [=](benchmark::State& state) {
    for (auto _ : state) {
      auto input = prepare();
      malloc_trim(0);
      const double start = ProcessorTime();
      auto output = run(input);
      state.SetIterationTime(ProcessorTime() - start);
      benchmark::DoNotOptimize(output);
      if constexpr (std::is_same_v<decltype(output), bool>) {
        if (!output) state.SkipWithError("the run failed");
      }
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), measure)
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
}

}  // namespace mapexport
